// An instant: a count of 100 ns ticks since 1601-01-01 UTC (a FILETIME), and its parts and forms.
//
// All arithmetic is on the 64-bit count. A count that is not a usable time (0, a negative one, one
// before 1900, the first second of 1970) makes an object that is not valid; nothing throws, and no
// function prints. The broken-down forms are computed when needed, not when a record is read.
#pragma once

#include <cstdint>
#include <ctime>
#include <string_view>
#include <utility>

namespace zanvik::qx {

inline constexpr std::uint64_t ticks_per_second = 10'000'000;
inline constexpr std::uint64_t ticks_per_millisecond = 10'000;
inline constexpr std::uint64_t ticks_per_day = 86'400 * ticks_per_second;
inline constexpr std::uint64_t unix_epoch_filetime = 116'444'736'000'000'000;  // 1970-01-01
inline constexpr std::uint64_t first_valid_filetime = 94'354'848'000'000'000;  // 1900-01-01

// A broken-down UTC time. Each of the three fine fields has the whole fraction of the second, not
// what is left after the coarser one.
struct _windows_systemtime {
  std::uint16_t year = 0;
  std::uint16_t month = 0;        // 1 to 12
  std::uint16_t day_of_week = 0;  // 0 Sunday to 6 Saturday
  std::uint16_t day = 0;          // 1 to 31
  std::uint16_t hour = 0;
  std::uint16_t minute = 0;
  std::uint16_t second = 0;
  std::uint16_t millisecond = 0;
  std::uint64_t microseconds = 0;
  std::uint64_t nanoseconds = 0;
  std::uint64_t picoseconds = 0;
};

// What the number given to `time` counts.
enum class type_time : std::uint32_t {
  filetime = 1,   // ticks since 1601
  unix_time = 8,  // seconds since 1970; zero and negative ones make an empty object
};

class time {
 public:
  time() = default;
  time(std::uint64_t value, type_time kind);
  // Reads "MM/DD/YYYY HH:MM:SS" (see time_parse.h); a date alone is midnight. Without `as_utc`
  // the text goes through the machine's zone and back, as mktime reads it.
  time(std::string_view text, bool as_utc);
  static time now();

  bool valid() const { return valid_; }
  // The count as given, even if it is not valid.
  std::uint64_t filetime() const { return filetime_; }
  // Seconds since 1970, for a valid time. Before 1970 it is a huge count, by unsigned wrap.
  std::int64_t unix_seconds() const { return unix_seconds_; }
  // The time is before 1970, for which there is no local time.
  bool before_unix_epoch() const { return before_unix_epoch_; }

  // Broken down, UTC; all zero for a count of 0 or one that is negative.
  _windows_systemtime system_time() const;
  // Broken down, local: false, with `out` unchanged, for an invalid time or one before 1970.
  bool local_time(std::tm& out) const;
  // The date word and the time word of a DOS time; zeros outside 1980 to 2037. Half-seconds are
  // rounded up, and 59 seconds round to 30 halves, which is meant.
  std::pair<std::uint16_t, std::uint16_t> dos_time() const;

 private:
  void set_filetime(std::uint64_t filetime);

  std::uint64_t filetime_ = 0;
  std::int64_t unix_seconds_ = 0;
  bool valid_ = false;
  bool before_unix_epoch_ = false;
};

// A year, month and day of the Gregorian calendar.
struct civil_date {
  std::int64_t year = 1601;
  unsigned month = 1;
  unsigned day = 1;
};
// The date `days` after 1601-01-01.
civil_date civil_from_days(std::uint64_t days);

}  // namespace zanvik::qx

namespace zanvik {

// True if qx::time takes `filetime` as valid, without making one.
constexpr bool is_valid_filetime(std::uint64_t filetime) {
  return filetime >= qx::first_valid_filetime && filetime >> 63 == 0 &&
         (filetime - qx::unix_epoch_filetime) / qx::ticks_per_second != 0;
}

// The UTC parts of `filetime`; all zero if it is negative as a signed count.
qx::_windows_systemtime system_from_filetime(std::uint64_t filetime);

// A broken-down time whose parts may be outside their range: a month outside 1 to 12 moves into the
// years, the others carry (the 24th hour is the next day, February 29 may be March 1). Counts
// before 1601 wrap around and are negative as signed ones.
struct loose_time {
  std::int64_t year = 1601, month = 1, day = 1;
  std::int64_t hour = 0, minute = 0, second = 0, millisecond = 0;
};
std::uint64_t loose_to_filetime(const loose_time& parts);
// The same for a system time; below the millisecond nothing counts.
std::uint64_t system_to_filetime(const qx::_windows_systemtime& parts);

// Seconds that local time is ahead of UTC, by the zone's rule of today.
std::int64_t local_offset_seconds();

}  // namespace zanvik
