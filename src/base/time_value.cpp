#include "base/time_value.h"

#include <sys/time.h>

namespace zanvik {
namespace {

// The calendar counts eras of 400 years from 0000-03-01: with March first, the leap day is the last
// of its year and needs no special case.
constexpr std::int64_t days_per_era = 146'097;
constexpr std::int64_t days_before_1601 = 584'694;  // from 0000-03-01

constexpr std::int64_t floor_div(std::int64_t a, std::int64_t b) {
  return a / b - (a % b < 0 ? 1 : 0);
}

// Days from 1601-01-01 to the first of a month; the month may be outside 1 to 12. The year has at
// most ten digits or so, which no caller comes near.
std::int64_t days_to_month(std::int64_t year, std::int64_t month) {
  const std::int64_t from_march = month - 3;
  year += floor_div(from_march, 12);
  const std::int64_t march_month = from_march - 12 * floor_div(from_march, 12);
  const std::int64_t era = floor_div(year, 400);
  const std::int64_t year_of_era = year - 400 * era;
  const std::int64_t day_of_year = (153 * march_month + 2) / 5;
  const std::int64_t day_of_era =
      365 * year_of_era + year_of_era / 4 - year_of_era / 100 + day_of_year;
  return era * days_per_era + day_of_era - days_before_1601;
}

}  // namespace

qx::_windows_systemtime system_from_filetime(std::uint64_t filetime) {
  qx::_windows_systemtime parts;
  if (filetime >> 63 != 0) return parts;
  const std::uint64_t days = filetime / qx::ticks_per_day;
  const std::uint64_t ticks = filetime % qx::ticks_per_second;
  const auto seconds =
      static_cast<std::uint32_t>(filetime % qx::ticks_per_day / qx::ticks_per_second);
  const qx::civil_date date = qx::civil_from_days(days);
  parts.year = static_cast<std::uint16_t>(date.year);
  parts.month = static_cast<std::uint16_t>(date.month);
  parts.day_of_week = static_cast<std::uint16_t>((days + 1) % 7);
  parts.day = static_cast<std::uint16_t>(date.day);
  parts.hour = static_cast<std::uint16_t>(seconds / 3600);
  parts.minute = static_cast<std::uint16_t>(seconds / 60 % 60);
  parts.second = static_cast<std::uint16_t>(seconds % 60);
  parts.millisecond = static_cast<std::uint16_t>(ticks / qx::ticks_per_millisecond);
  parts.microseconds = ticks / 10;
  parts.nanoseconds = ticks * 100;
  parts.picoseconds = ticks * 100'000;
  return parts;
}

std::uint64_t loose_to_filetime(const loose_time& parts) {
  // Unsigned, so that times before 1601 or out of range wrap instead of overflowing.
  const auto u = [](std::int64_t value) { return static_cast<std::uint64_t>(value); };
  const std::uint64_t days = u(days_to_month(parts.year, parts.month)) + u(parts.day) - 1;
  const std::uint64_t seconds = ((days * 24 + u(parts.hour)) * 60 + u(parts.minute)) * 60;
  return (seconds + u(parts.second)) * qx::ticks_per_second +
         u(parts.millisecond) * qx::ticks_per_millisecond;
}

std::uint64_t system_to_filetime(const qx::_windows_systemtime& parts) {
  return loose_to_filetime({.year = parts.year,
                            .month = parts.month,
                            .day = parts.day,
                            .hour = parts.hour,
                            .minute = parts.minute,
                            .second = parts.second,
                            .millisecond = parts.millisecond});
}

std::int64_t local_offset_seconds() {
  const std::time_t now = std::time(nullptr);
  std::tm local{};
  std::tm utc{};
  if (!localtime_r(&now, &local) || !gmtime_r(&now, &utc)) return 0;
  return std::mktime(&local) - std::mktime(&utc);
}

namespace qx {

civil_date civil_from_days(std::uint64_t days) {
  const auto shifted = static_cast<std::int64_t>(days) + days_before_1601;
  const std::int64_t era = shifted / days_per_era;
  const auto day_of_era = static_cast<std::uint32_t>(shifted % days_per_era);
  const std::uint32_t year_of_era =
      (day_of_era - day_of_era / 1460 + day_of_era / 36'524 - day_of_era / 146'096) / 365;
  const std::uint32_t day_of_year =
      day_of_era - (365 * year_of_era + year_of_era / 4 - year_of_era / 100);
  const std::uint32_t march_month = (5 * day_of_year + 2) / 153;
  civil_date date;
  date.month = march_month < 10 ? march_month + 3 : march_month - 9;
  date.day = day_of_year - (153 * march_month + 2) / 5 + 1;
  date.year = era * 400 + year_of_era + (date.month <= 2 ? 1 : 0);
  return date;
}

time::time(std::uint64_t value, type_time kind) {
  if (kind == type_time::filetime) {
    set_filetime(value);
  } else if (value != 0 && value >> 63 == 0) {
    set_filetime(value * ticks_per_second + unix_epoch_filetime);
  }
}

time time::now() {
  timeval clock{};
  gettimeofday(&clock, nullptr);
  return {static_cast<std::uint64_t>(clock.tv_sec) * ticks_per_second +
              static_cast<std::uint64_t>(clock.tv_usec) * 10 + unix_epoch_filetime,
          type_time::filetime};
}

void time::set_filetime(std::uint64_t filetime) {
  filetime_ = filetime;
  if (filetime == 0 || filetime >> 63 != 0) return;
  // Unsigned, so a time before 1970 is a huge count; and a time in the first second of 1970 is
  // refused like "no time at all". Both are meant.
  const std::uint64_t seconds = (filetime - unix_epoch_filetime) / ticks_per_second;
  if (seconds == 0) return;
  unix_seconds_ = static_cast<std::int64_t>(seconds);
  before_unix_epoch_ = filetime < unix_epoch_filetime;
  valid_ = filetime >= first_valid_filetime;
}

_windows_systemtime time::system_time() const {
  return filetime_ == 0 ? _windows_systemtime{} : system_from_filetime(filetime_);
}

bool time::local_time(std::tm& out) const {
  if (!valid_ || before_unix_epoch_) return false;
  const std::time_t shifted = unix_seconds_ + local_offset_seconds();
  std::tm local{};
  if (shifted < 0 || !gmtime_r(&shifted, &local)) return false;
  out = local;
  return true;
}

std::pair<std::uint16_t, std::uint16_t> time::dos_time() const {
  const _windows_systemtime parts = system_time();
  if (parts.year < 1980 || parts.year > 2037) return {};
  const unsigned date = (parts.year - 1980u) * 512 + parts.month * 32u + parts.day;
  const unsigned halves = (parts.second / 2u + parts.second % 2u) % 32;
  const unsigned clock = parts.hour * 2048u + parts.minute * 32u + halves;
  return {static_cast<std::uint16_t>(date), static_cast<std::uint16_t>(clock)};
}

}  // namespace qx
}  // namespace zanvik
