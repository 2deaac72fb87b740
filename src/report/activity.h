// How many events each host had, by day, hour and group of questions.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "base/hash_mix.h"

namespace zanvik {

inline constexpr std::size_t most_groups = 12;
inline constexpr std::uint32_t no_group = UINT32_MAX;

// One day of one host.
struct host_day {
  std::uint32_t host = 0;
  std::uint32_t day = 0;  // since 1601-01-01, UTC
  std::array<std::uint32_t, 24> hours{};
  std::array<std::uint32_t, most_groups> groups{};
};

class activity {
 public:
  // The number of a host; names that are too many share one. A name is as page_text.h shows it.
  std::uint32_t host_number(std::string_view name);
  const std::vector<std::string>& hosts() const { return hosts_; }

  // An event of this group of questions, or of `no_group`.
  void add(std::uint32_t host, std::uint64_t filetime, std::uint32_t group);

  const std::vector<host_day>& days() const { return days_; }
  // Events of a host.
  std::uint64_t events_of(std::uint32_t host) const { return events_[host]; }
  std::uint64_t events() const { return all_events_; }
  // Events whose day has no place any more.
  std::uint64_t uncharted() const { return uncharted_; }
  // FILETIMEs; 0 without any event that has a time.
  std::uint64_t first() const { return first_; }
  std::uint64_t last() const { return last_; }

 private:
  host_day* day_of(std::uint32_t host, std::uint32_t day);

  std::vector<std::string> hosts_;
  std::vector<std::uint64_t> events_;
  std::unordered_map<std::string, std::uint32_t, keyed_text_hash, std::equal_to<>> numbers_;
  struct key_hash {
    std::size_t operator()(std::uint64_t key) const {
      return static_cast<std::size_t>(keyed_hash(key));
    }
  };
  std::unordered_map<std::uint64_t, std::size_t, key_hash> places_;  // by host and day
  std::vector<host_day> days_;
  std::size_t last_place_ = SIZE_MAX;
  std::uint64_t all_events_ = 0, uncharted_ = 0, first_ = 0, last_ = 0;
};

}  // namespace zanvik
