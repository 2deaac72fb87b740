// The options that decide which records of a log are selected.
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
  std::vector<std::uint64_t> event_ids{all_ones};  // all ones means any
  std::string substring;                           // some value must contain it; empty means none
  bool record_range_on = false;                    // one of the three below was given
  std::vector<std::uint64_t> record_ids;
  std::uint64_t record_start = 0;
  std::uint64_t record_stop = 0;  // all ones if a start was given
};

}  // namespace zanvik
