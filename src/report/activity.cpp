#include "report/activity.h"

#include <algorithm>

#include "base/time_value.h"
#include "report/report_limits.h"

namespace zanvik {

std::uint32_t activity::host_number(std::string_view name) {
  const auto known = numbers_.find(name);
  if (known != numbers_.end()) return known->second;
  if (hosts_.size() == report_limits::hosts) name = "[other hosts]";
  if (hosts_.size() > report_limits::hosts) return report_limits::hosts;
  const auto number = static_cast<std::uint32_t>(hosts_.size());
  hosts_.emplace_back(name);
  events_.push_back(0);
  numbers_.emplace(name, number);
  return number;
}

host_day* activity::day_of(std::uint32_t host, std::uint32_t day) {
  if (last_place_ < days_.size() && days_[last_place_].host == host &&
      days_[last_place_].day == day) {
    return &days_[last_place_];
  }
  const std::uint64_t key = std::uint64_t{host} << 32 | day;
  const auto known = places_.find(key);
  if (known != places_.end()) {
    last_place_ = known->second;
  } else if (days_.size() == report_limits::host_days) {
    return nullptr;
  } else {
    last_place_ = days_.size();
    places_.emplace(key, last_place_);
    days_.push_back({host, day, {}, {}});
  }
  return &days_[last_place_];
}

void activity::add(std::uint32_t host, std::uint64_t filetime, std::uint32_t group) {
  ++all_events_;
  ++events_[host];
  if (filetime == 0) {
    ++uncharted_;
    return;
  }
  first_ = first_ == 0 ? filetime : std::min(first_, filetime);
  last_ = std::max(last_, filetime);
  host_day* const day = day_of(host, static_cast<std::uint32_t>(filetime / qx::ticks_per_day));
  if (day == nullptr) {
    ++uncharted_;
    return;
  }
  ++day->hours[filetime % qx::ticks_per_day / (qx::ticks_per_day / 24)];
  if (group < most_groups) ++day->groups[group];
}

}  // namespace zanvik
