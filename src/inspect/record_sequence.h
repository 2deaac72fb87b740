// Numbers and times of consecutive records: gaps, repetitions, times that run backwards.
//
// In: the records in order. Out: findings, and the times seen. A time that goes back by more than a
// minute while the number rises is kept as a jump, because only the events of the whole log say
// whether somebody set the clock.
#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "inspect/log_ledger.h"

namespace zanvik {

// A record as the sequence sees it.
struct sequence_record {
  std::uint64_t offset = 0;  // in the file
  std::optional<std::uint64_t> chunk;
  std::uint64_t number = 0;
  std::uint64_t time_written = 0;  // FILETIME
};

struct time_jump {
  sequence_record record;    // the one whose time is earlier
  std::uint64_t before = 0;  // the time of the one before it
};

class record_sequence {
 public:
  // `latest` is a time after which no record can have been written; 0 for none.
  record_sequence(finding_list& findings, std::uint64_t latest)
      : findings_(findings), latest_(latest) {}

  // The record follows the last one, or begins a new run.
  void add(const sequence_record& record);
  void start_run() { previous_.reset(); }
  // Compares across a border between chunks; a finding is placed at `next`.
  void compare(const sequence_record& before, const sequence_record& next);

  std::uint64_t first_time() const { return first_time_; }  // the least and the greatest that can
  std::uint64_t last_time() const { return last_time_; }    // be times; 0 without any
  const std::vector<time_jump>& jumps() const { return jumps_; }

 private:
  void check_time(const sequence_record& record);

  finding_list& findings_;
  std::uint64_t latest_;
  std::optional<sequence_record> previous_;
  std::uint64_t first_time_ = 0;
  std::uint64_t last_time_ = 0;
  std::vector<time_jump> jumps_;  // at most as many as findings of a kind
};

// "2024-01-15 08:00:00" in UTC, empty if it is not a time.
std::string utc_text(std::uint64_t filetime);
// "3 records (5 to 7)", "1 record (5)".
std::string numbers_text(std::uint64_t first, std::uint64_t last);

}  // namespace zanvik
