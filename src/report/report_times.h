// Instants as the page's script and its readers see them.
#pragma once

#include <cstdint>
#include <string>

#include "base/time_value.h"

namespace zanvik {

// Milliseconds since 1970; the script counts in them.
inline std::int64_t unix_milliseconds(std::uint64_t filetime) {
  return (static_cast<std::int64_t>(filetime / qx::ticks_per_millisecond)) -
         static_cast<std::int64_t>(qx::unix_epoch_filetime / qx::ticks_per_millisecond);
}

struct calendar_day {
  std::int64_t year = 0;
  unsigned month = 1, day = 1;
};
// Of a day since 1601-01-01, in the Gregorian calendar, and back.
calendar_day date_of(std::uint32_t day);
std::uint32_t day_of(const calendar_day& date);

// "2024-03-09"
std::string date_text(std::uint32_t day);
// "2024-03-09 01:12:10"; "-" for 0.
std::string time_text(std::uint64_t filetime);

}  // namespace zanvik
