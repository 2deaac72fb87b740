#include "base/time_parse.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <ctime>
#include <string>

#include "base/month_names.h"
#include "base/number_text.h"
#include "base/text.h"

namespace zanvik {
namespace {

constexpr std::size_t longest_date = 512;
constexpr std::size_t longest_clock_field = 31;

// 1 to 12, or 0 if these are not a month's three letters.
unsigned month_from_letters(std::string_view text) {
  for (unsigned month = 1; month <= month_names.size(); ++month) {
    if (equal_nocase(text, short_month_name(month))) return month;
  }
  return 0;
}

// The same, but the whole name is accepted too.
unsigned month_from_name(std::string_view text) {
  for (unsigned month = 1; month <= month_names.size(); ++month) {
    if (equal_nocase(text, month_names[month - 1])) return month;
  }
  return month_from_letters(text);
}

// A short number, as atoi reads it; a negative one is outside every later range.
unsigned small_number(std::string_view text) {
  return static_cast<unsigned>(std::atoi(std::string(text).c_str()));
}

// A field of a clock time, as atof reads it. Words such as "inf" and numbers that no day could have
// are refused, because the result must fit a count.
bool clock_field(std::string_view text, double& value) {
  if (text.size() > longest_clock_field) return false;
  value = std::atof(std::string(text).c_str());
  return std::abs(value) < 1e9;  // also false if it is not a number
}

struct whole_clock {
  std::uint16_t hour, minute, second;
  double fraction;  // of the second
};

// A clock time in whole parts; nothing if a part does not fit its field.
std::optional<whole_clock> whole_parts(std::string_view text) {
  const auto clock = parse_clock(text);
  if (!clock) return std::nullopt;
  const auto fits = [](double part) { return part >= 0 && part < 65536; };
  if (!fits(clock->hours) || !fits(clock->minutes) || !fits(clock->seconds)) return std::nullopt;
  const auto whole = [](double part) { return static_cast<std::uint16_t>(part); };
  return whole_clock{whole(clock->hours), whole(clock->minutes), whole(clock->seconds),
                     clock->seconds - std::floor(clock->seconds)};
}

struct ymd_fields {
  std::uint32_t year = 0, month = 0, day = 0;
};

// Reads `text` into the part that `letter` stands for; other letters skip it.
bool read_ymd_field(std::string_view text, char letter, ymd_fields& fields) {
  const auto number = unsigned_from_text(text);
  if (letter == 'Y') fields.year = number.value_or(0);
  if (letter == 'M') fields.month = number.value_or(0);
  if (letter == 'D') fields.day = number.value_or(0);
  return number.has_value();
}

bool read_ymd_fields(std::string_view text, std::string_view order, char separator,
                     ymd_fields& fields) {
  for (bool more = true; !order.empty();) {
    if (!more) return false;
    const auto cut = text.find(separator);
    const auto field = text.substr(0, cut);
    more = cut != std::string_view::npos;
    if (more) text.remove_prefix(cut + 1);
    if (order.starts_with("Mon")) {
      fields.month = month_from_name(field);
      if (fields.month == 0) return false;
      order.remove_prefix(3);
    } else {
      if (!read_ymd_field(field, order[0], fields)) return false;
      order.remove_prefix(1);
    }
  }
  return true;
}

// What a UTC count becomes if its parts are read as local ones and today's offset of the zone is
// added again: the same, except for a change of clocks in between.
std::uint64_t local_round_trip(std::uint64_t filetime) {
  const qx::_windows_systemtime parts = system_from_filetime(filetime);
  std::tm local{};
  local.tm_year = parts.year - 1900;
  local.tm_mon = parts.month - 1;
  local.tm_mday = parts.day;
  local.tm_hour = parts.hour;
  local.tm_min = parts.minute;
  local.tm_sec = parts.second;
  local.tm_isdst = -1;
  const std::int64_t seconds = std::mktime(&local) + local_offset_seconds();
  return static_cast<std::uint64_t>(seconds) * qx::ticks_per_second + qx::unix_epoch_filetime;
}

}  // namespace

std::optional<month_day_year> parse_date_mdy(std::string_view text) {
  text = text.substr(0, longest_date);
  auto first = text.find('-');
  if (first == std::string_view::npos) first = text.find('/');
  if (first == std::string_view::npos) return std::nullopt;
  const auto second = text.find(text[first], first + 1);
  if (second == std::string_view::npos || second + 1 == text.size()) return std::nullopt;
  const auto front = text.substr(0, first);
  const auto middle = text.substr(first + 1, second - first - 1);
  if (front.size() > 2 || middle.size() > 3) return std::nullopt;
  // A name is never first: it is longer than the first part may be.
  month_day_year date;
  date.month = month_from_letters(middle);
  date.day = small_number(date.month != 0 ? front : middle);
  if (date.month == 0) date.month = small_number(front);

  auto last = text.substr(second + 1);
  last = last.substr(0, std::min<std::size_t>(last.find(' '), 4));
  if (last.empty() || last[0] < '0' || last[0] > '9') return std::nullopt;
  date.year = small_number(last);
  if (last.size() == 2) date.year += date.year < 31 ? 2000 : 1900;
  if (date.month < 1 || date.month > 12 || date.day < 1 || date.day > 31) return std::nullopt;
  return date;
}

std::optional<clock_time> parse_clock(std::string_view text) {
  const std::string lowered = to_lower(trimmed(text));
  const std::string_view view = lowered;
  const auto colon = view.find(':');
  if (colon == std::string_view::npos) return std::nullopt;
  const auto minutes_and_on = view.substr(colon + 1);
  const auto second_colon = minutes_and_on.find(':');
  const auto minutes = minutes_and_on.substr(0, second_colon);
  clock_time clock;
  if (minutes.empty() || !clock_field(view.substr(0, colon), clock.hours) ||
      !clock_field(minutes, clock.minutes)) {
    return std::nullopt;
  }
  if (second_colon != std::string_view::npos &&
      !clock_field(minutes_and_on.substr(second_colon + 1), clock.seconds)) {
    return std::nullopt;
  }
  const auto m = view.find('m', colon);
  // 12 pm is no exception: it becomes hour 24, the next day.
  if (m != std::string_view::npos && view[m - 1] == 'p') clock.hours += 12;
  return clock;
}

bool parse_date_ymd(std::string_view date_text, std::string_view time_text, std::string_view order,
                    char separator, qx::_windows_systemtime& out) {
  if (date_text.empty() || order.size() < 3) return false;
  ymd_fields fields;
  if (!read_ymd_fields(date_text, order, separator, fields)) return false;
  if (fields.year <= 99) fields.year += fields.year < 31 ? 2000 : 1900;
  if (fields.year > 65535 || fields.month > 12 || fields.day > 31) return false;
  qx::_windows_systemtime parts;
  parts.year = static_cast<std::uint16_t>(fields.year);
  parts.month = static_cast<std::uint16_t>(fields.month);
  parts.day = static_cast<std::uint16_t>(fields.day);
  if (!time_text.empty()) {
    const auto clock = whole_parts(time_text);
    if (!clock) return false;
    parts.hour = clock->hour;
    parts.minute = clock->minute;
    parts.second = clock->second;
    parts.millisecond = static_cast<std::uint16_t>(clock->fraction * 1000 + 0.5);
  }
  out = parts;
  return true;
}

std::uint64_t parse_iso8601(std::string_view text) {
  const auto t = text.find('T');
  qx::_windows_systemtime parts;
  if (!parse_date_ymd(text.substr(0, t), {}, "YMD", '-', parts)) return 0;
  std::uint64_t nanoseconds = 0;
  if (t != std::string_view::npos) {
    const auto time_text = text.substr(t + 1);
    const auto clock = whole_parts(time_text.substr(0, time_text.find('Z')));
    if (!clock) return 0;
    parts.hour = clock->hour;
    parts.minute = clock->minute;
    parts.second = clock->second;
    nanoseconds = static_cast<std::uint64_t>(clock->fraction * 1e9 + 0.5);
  }
  return system_to_filetime(parts) + nanoseconds / 100;
}

namespace qx {

time::time(std::string_view text, bool as_utc) {
  const auto blank = text.find(' ');
  const auto date = parse_date_mdy(text.substr(0, blank));
  const auto clock =
      parse_clock(blank == std::string_view::npos ? "00:00:00" : text.substr(blank + 1));
  if (!date || !clock) return;
  const double milliseconds =
      std::trunc((clock->hours * 3600 + clock->minutes * 60 + clock->seconds) * 1000);
  const auto seconds = static_cast<std::int64_t>(milliseconds) / 1000;
  std::uint64_t filetime = loose_to_filetime(
      {.year = date->year, .month = date->month, .day = date->day, .second = seconds});
  if (!as_utc) filetime = local_round_trip(filetime);
  set_filetime(filetime);
}

}  // namespace qx
}  // namespace zanvik
