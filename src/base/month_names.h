// The names of the months, for whoever prints or reads dates. Internal to this folder.
#pragma once

#include <array>
#include <cstddef>
#include <string_view>

namespace zanvik {

inline constexpr std::array<std::string_view, 12> month_names = {
    "January", "February", "March",     "April",   "May",      "June",
    "July",    "August",   "September", "October", "November", "December"};

// "Jan"; `month` counts from 1.
constexpr std::string_view short_month_name(unsigned month) {
  return month_names[month - 1].substr(0, 3);
}

}  // namespace zanvik
