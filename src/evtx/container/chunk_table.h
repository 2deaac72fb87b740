// A hash table for one chunk: entries in order of arrival, found by a keyed hash.
//
// It is emptied for each chunk, so it clears only as many places as a usual chunk fills, and frees
// the memory that an unusual one needed.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

namespace zanvik {

// `usual_places` is a power of two; up to half of the places are used.
template <typename Entry, std::size_t usual_places>
class chunk_table {
 public:
  void clear() {
    static_assert((usual_places & (usual_places - 1)) == 0);
    if (places_.size() == usual_places) {
      std::fill(places_.begin(), places_.end(), place{});
      entries_.clear();
    } else {
      places_ = std::vector<place>(usual_places);
      entries_ = {};
    }
  }

  // The entry with this hash for which `is_it` holds, or null. Valid until the next `add`.
  template <typename F>
  Entry* find(std::uint64_t hash, F&& is_it) {
    if (places_.empty()) return nullptr;
    for (std::size_t at = hash;; ++at) {
      const place& found = places_[at & (places_.size() - 1)];
      if (found.number == 0) return nullptr;
      if (found.tag != tag_of(hash)) continue;
      Entry& entry = entries_[found.number - 1].second;
      if (is_it(entry)) return &entry;
    }
  }

  // Adds an entry that does not exist yet. Valid until the next `add`.
  Entry& add(std::uint64_t hash, Entry added) {
    if (2 * (entries_.size() + 1) > places_.size()) grow();
    entries_.emplace_back(hash, std::move(added));
    put(hash, static_cast<std::uint32_t>(entries_.size()));
    return entries_.back().second;
  }

 private:
  struct place {
    std::uint32_t tag = 0;
    std::uint32_t number = 0;  // of the entry, from 1; 0 for none
  };
  static std::uint32_t tag_of(std::uint64_t hash) { return static_cast<std::uint32_t>(hash >> 32); }

  void put(std::uint64_t hash, std::uint32_t number) {
    std::size_t at = hash;
    while (places_[at & (places_.size() - 1)].number != 0) ++at;
    places_[at & (places_.size() - 1)] = {tag_of(hash), number};
  }
  void grow() {
    places_ = std::vector<place>(std::max(2 * places_.size(), usual_places));
    std::uint32_t number = 0;
    for (const auto& [hash, entry] : entries_) put(hash, ++number);
  }

  std::vector<place> places_;
  std::vector<std::pair<std::uint64_t, Entry>> entries_;
};

}  // namespace zanvik
