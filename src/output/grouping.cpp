#include "output/grouping.h"

#include <algorithm>
#include <unordered_map>

#include "base/hash_mix.h"

namespace zanvik {

std::size_t grouping::key_hash::operator()(const key& of) const {
  return static_cast<std::size_t>(
      keyed_hash(of.event_id, reinterpret_cast<std::uintptr_t>(of.provider)));
}

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
  std::unordered_map<key, std::uint32_t, key_hash> numbers;
  std::vector<std::uint32_t> result;
  result.reserve(records.size());
  for (const LogRecord* record : records) {
    const key of{record->event_id, record->provider};
    if (!result.empty() && keys_[result.back()] == of) {
      result.push_back(result.back());
      continue;
    }
    if (keys_.size() <= few_groups) {
      const auto known = std::find(keys_.begin(), keys_.end(), of);
      result.push_back(static_cast<std::uint32_t>(known - keys_.begin()));
      if (known == keys_.end()) keys_.push_back(of);
      if (keys_.size() > few_groups) {
        for (std::uint32_t i = 0; i < keys_.size(); ++i) numbers.emplace(keys_[i], i);
      }
      continue;
    }
    const auto [at, added] = numbers.try_emplace(of, static_cast<std::uint32_t>(keys_.size()));
    if (added) keys_.push_back(of);
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

}  // namespace zanvik
