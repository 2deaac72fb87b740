// The tables of a set of records: groups of equal event ID and provider, in order of ID and then of
// the provider's bytes. Records keep their order within a group.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "events/log_record.h"

namespace zanvik {

// Sorts records into groups. Groups are numbered as they are found; `ranks` then says where each is
// in the order.
class grouping {
 public:
  explicit grouping(std::span<const LogRecord* const> records);

  std::size_t count() const { return begins_.size() - 1; }
  std::span<const LogRecord* const> group(std::size_t rank) const {
    return std::span(sorted_).subspan(begins_[rank], begins_[rank + 1] - begins_[rank]);
  }

 private:
  struct key {
    std::uint64_t event_id = 0;
    const std::string* provider = nullptr;

    bool operator==(const key&) const = default;
  };
  struct key_hash {
    std::size_t operator()(const key& of) const;
  };

  std::vector<std::uint32_t> number_records(std::span<const LogRecord* const> records);
  std::vector<std::uint32_t> rank_groups();

  std::vector<key> keys_;
  std::vector<const LogRecord*> sorted_;
  std::vector<std::size_t> begins_;  // of the groups by rank, and the end of the last
};

}  // namespace zanvik
