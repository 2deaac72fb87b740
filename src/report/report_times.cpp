#include "report/report_times.h"

#include <algorithm>
#include <chrono>
#include <cstdio>

namespace zanvik {
namespace {

using std::chrono::days;
using std::chrono::sys_days;
using std::chrono::year_month_day;

constexpr sys_days first_day{std::chrono::year(1601) / 1 / 1};

}  // namespace

// The library's years end at 32767; FILETIMEs go a little further, to where nobody looks.
calendar_day date_of(std::uint32_t day) {
  constexpr std::uint32_t last_day = 11'000'000;
  const year_month_day date(first_day + days(std::min(day, last_day)));
  return {int{date.year()}, unsigned{date.month()}, unsigned{date.day()}};
}

std::uint32_t day_of(const calendar_day& date) {
  const year_month_day known(std::chrono::year(static_cast<int>(date.year)),
                             std::chrono::month(date.month), std::chrono::day(date.day));
  return static_cast<std::uint32_t>((sys_days(known) - first_day).count());
}

std::string date_text(std::uint32_t day) {
  const calendar_day date = date_of(day);
  char text[48];
  std::snprintf(text, sizeof(text), "%04d-%02u-%02u", static_cast<int>(date.year), date.month,
                date.day);
  return text;
}

std::string time_text(std::uint64_t filetime) {
  if (filetime == 0) return "-";
  const std::uint64_t second = filetime % qx::ticks_per_day / qx::ticks_per_second;
  char text[32];
  std::snprintf(text, sizeof(text), " %02u:%02u:%02u", static_cast<unsigned>(second / 3600),
                static_cast<unsigned>(second / 60 % 60), static_cast<unsigned>(second % 60));
  return date_text(static_cast<std::uint32_t>(filetime / qx::ticks_per_day)) + text;
}

}  // namespace zanvik
