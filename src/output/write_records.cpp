#include "output/write_records.h"

#include <algorithm>
#include <cstdint>
#include <string>
#include <unordered_map>
#include <vector>

#include "base/hash_mix.h"
#include "base/text.h"
#include "output/row_buffer.h"
#include "output/tables/event_table.h"
#include "output/time_cells.h"
#include "output/timelines/timeline_writer.h"

namespace zanvik {
namespace {

struct group_key {
  std::uint64_t event_id = 0;
  const std::string* provider = nullptr;

  bool operator==(const group_key&) const = default;
};

struct group_key_hash {
  std::size_t operator()(const group_key& key) const {
    const auto provider = reinterpret_cast<std::uintptr_t>(key.provider);
    return static_cast<std::size_t>(keyed_hash(key.event_id, provider));
  }
};

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
  std::vector<std::uint32_t> number_records(std::span<const LogRecord* const> records);
  std::vector<std::uint32_t> rank_groups();

  std::vector<group_key> keys_;
  std::vector<const LogRecord*> sorted_;
  std::vector<std::size_t> begins_;  // of the groups by rank, and the end of the last
};

grouping::grouping(std::span<const LogRecord* const> records) {
  std::vector<std::uint32_t> places = number_records(records);
  const std::vector<std::uint32_t> ranks = rank_groups();
  for (std::uint32_t& place : places) {
    place = ranks[place];
    ++begins_[place + 1];
  }
  for (std::size_t i = 1; i < begins_.size(); ++i) begins_[i] += begins_[i - 1];
  sorted_.resize(records.size());
  std::vector<std::size_t> next(begins_);
  for (std::size_t i = 0; i < records.size(); ++i) sorted_[next[places[i]]++] = records[i];
}

std::vector<std::uint32_t> grouping::number_records(std::span<const LogRecord* const> records) {
  constexpr std::size_t few_groups = 24;  // small logs have no more: a linear search is faster
  std::unordered_map<group_key, std::uint32_t, group_key_hash> numbers;
  std::vector<std::uint32_t> result;
  result.reserve(records.size());
  for (const LogRecord* record : records) {
    const group_key key{record->event_id, record->provider};
    if (!result.empty() && keys_[result.back()] == key) {
      result.push_back(result.back());
      continue;
    }
    if (keys_.size() <= few_groups) {
      const auto known = std::find(keys_.begin(), keys_.end(), key);
      result.push_back(static_cast<std::uint32_t>(known - keys_.begin()));
      if (known == keys_.end()) keys_.push_back(key);
      if (keys_.size() > few_groups) {
        for (std::uint32_t i = 0; i < keys_.size(); ++i) numbers.emplace(keys_[i], i);
      }
      continue;
    }
    const auto [at, added] = numbers.try_emplace(key, static_cast<std::uint32_t>(keys_.size()));
    if (added) keys_.push_back(key);
    result.push_back(at->second);
  }
  return result;
}

// The rank of each numbered group; equal texts at two addresses share one. Makes `begins_` as long
// as needed.
std::vector<std::uint32_t> grouping::rank_groups() {
  std::vector<std::uint32_t> order(keys_.size());
  for (std::uint32_t i = 0; i < order.size(); ++i) order[i] = i;
  const auto compare = [this](std::uint32_t a, std::uint32_t b) {
    if (keys_[a].event_id != keys_[b].event_id) {
      return keys_[a].event_id < keys_[b].event_id ? -1 : 1;
    }
    return keys_[a].provider->compare(*keys_[b].provider);
  };
  std::sort(order.begin(), order.end(),
            [&](std::uint32_t a, std::uint32_t b) { return compare(a, b) < 0; });
  std::vector<std::uint32_t> ranks(keys_.size());
  std::uint32_t rank = 0;
  for (std::size_t i = 0; i < order.size(); ++i) {
    if (i != 0 && compare(order[i - 1], order[i]) != 0) ++rank;
    ranks[order[i]] = rank;
  }
  begins_.assign(std::size_t{rank} + 2, 0);
  return ranks;
}

}  // namespace

void write_records(std::ostream& out, record_container& records, const output_format& format,
                   const write_context& context, output_memory& memory) {
  if (records.empty()) return;
  if (format.output_bodyfile || format.output_l2t) {
    write_timeline(out, records.in_time_order(), format, context, memory.header_pending);
  } else if (format.output_csv) {
    memory.tables.use_with(records);
    write_grouped(out, records.in_time_order(), format, context, memory.tables);
    memory.header_pending = false;
  }
}

void write_grouped(std::ostream& out, std::span<const LogRecord* const> records,
                   const output_format& format, const write_context& context, table_cache& tables) {
  if (records.empty()) return;
  const grouping groups(records);
  row_buffer buffer(out);
  time_cells times(format);
  for (std::size_t i = 0; i < groups.count(); ++i) {
    if (i != 0) buffer.append("\n");
    write_event_table(buffer, times, tables, groups.group(i), format, context);
  }
}

}  // namespace zanvik
