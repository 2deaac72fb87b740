// The result of `check` for one log: facts of its header, the account in which every byte of the
// log has one line, its chunks, and the findings. The forms of `check` print it; nothing here
// depends on a form. It owns all of its memory.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <utility>
#include <variant>
#include <vector>

#include "inspect/area.h"
#include "inspect/finding.h"

namespace zanvik {

// A set of record numbers as ranges, for numbers that are mostly ascending.
class number_ranges {
 public:
  void add(std::uint64_t number);
  // Sorted and joined; the last ones are missing if there are too many (limits.h).
  const std::vector<std::pair<std::uint64_t, std::uint64_t>>& joined();
  bool cut() const { return cut_; }

 private:
  std::vector<std::pair<std::uint64_t, std::uint64_t>> ranges_;  // first and last number
  bool cut_ = false;
};

struct account_line {
  std::uint64_t records = 0;
  std::uint64_t bytes = 0;
  number_ranges numbers;
};

class log_account {
 public:
  void add(const area& part);
  account_line& line(area_kind kind) { return lines_[static_cast<std::size_t>(kind)]; }
  const account_line& line(area_kind kind) const { return lines_[static_cast<std::size_t>(kind)]; }
  std::uint64_t bytes() const;  // of all lines; the size of the log
  std::uint64_t found() const;  // living records, read or lost
  std::uint64_t given() const;  // living records that the reader gives
  std::uint64_t free_records() const;

  std::uint64_t declared = 0;          // by the headers of chunks, or of a legacy log
  std::uint64_t missing = 0;           // declared numbers without a record
  std::uint64_t given_with_slack = 0;  // what the search of free space gives as well

 private:
  std::array<account_line, area_kinds> lines_;
};

struct log_fact {
  std::string name;
  std::variant<bool, std::uint64_t, std::string> value;
};

enum class chunk_state : std::uint8_t { sound, empty, foreign };

// A chunk in a few words.
struct chunk_summary {
  std::uint64_t index = 0;   // its place in the file
  std::uint64_t offset = 0;  // in the file
  chunk_state state = chunk_state::sound;
  std::uint64_t declared_first = 0, declared_last = 0;
  std::uint64_t found_first = 0, found_last = 0;  // numbers of the living records, 0 without any
  std::uint32_t records = 0;                      // living ones
  std::uint32_t used_bytes = 0;                   // up to where its free space begins
  bool header_checksum_good = true;
  bool data_checksum_good = true;
  std::uint32_t data_checksum = 0;  // as it is now
};

// How often something occurs in the log's events.
struct name_count {
  std::string name;
  std::uint64_t count = 0;
};

struct log_ledger {
  std::string path;
  std::string format;  // "evtx", "evt"
  std::uint64_t size = 0;
  std::string sha256;
  std::vector<log_fact> facts;
  log_account account;
  std::vector<chunk_summary> chunks;
  finding_list findings;
  // Of the live events, the most frequent first; days by date.
  std::vector<name_count> events;  // "4624 Microsoft-Windows-Security-Auditing"
  std::vector<name_count> channels;
  std::vector<name_count> computers;
  std::vector<name_count> users;  // SIDs
  std::vector<name_count> days;   // "2024-01-15"
};

}  // namespace zanvik
