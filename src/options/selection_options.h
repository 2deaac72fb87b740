// The part of the options that says which records of a log are wanted.
#pragma once

#include <cstdint>
#include <limits>
#include <string>
#include <vector>

namespace zanvik {

struct selection_options {
  static constexpr std::uint64_t all_ones = std::numeric_limits<std::uint64_t>::max();

  std::uint64_t start_time = 0;                    // FILETIME, inclusive
  std::uint64_t stop_time = all_ones;              // FILETIME, inclusive
  std::vector<std::uint64_t> event_ids{all_ones};  // all ones stands for any
  std::string substring;                           // some value must hold it; empty is none
  bool record_range_on = false;                    // one of the three below was given
  std::vector<std::uint64_t> record_ids;
  std::uint64_t record_start = 0;
  std::uint64_t record_stop = 0;  // all ones once a start was given
};

}  // namespace zanvik
