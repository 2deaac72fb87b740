#include "merge/result_form.h"

#include <algorithm>
#include <charconv>
#include <string>

#include "base/time_parse.h"
#include "merge/json_member.h"

namespace zanvik {
namespace {

constexpr std::size_t npos = std::string_view::npos;

bool is_digit(char c) { return c >= '0' && c <= '9'; }

// Takes digits off `text`: exactly `count` of them, or with 0 as many as there are.
bool take_number(std::string_view& text, std::size_t count, std::uint64_t& number) {
  std::size_t digits = 0;
  while (digits < text.size() && is_digit(text[digits]) && (count == 0 || digits < count)) ++digits;
  if (digits == 0 || (count != 0 && digits != count)) return false;
  const auto [end, error] = std::from_chars(text.data(), text.data() + digits, number);
  text.remove_prefix(digits);
  return error == std::errc();
}

bool take(std::string_view& text, std::string_view expected) {
  if (!text.starts_with(expected)) return false;
  text.remove_prefix(expected.size());
  return true;
}

// Days from 1601-01-01 to a date of the Gregorian calendar.
std::uint64_t days_to(std::uint64_t year, std::uint64_t month, std::uint64_t day) {
  // Years begin in March, so that a leap day is the last of its year.
  const std::uint64_t y = month > 2 ? year : year - 1;
  const std::uint64_t m = month > 2 ? month - 3 : month + 9;
  constexpr std::uint64_t to_1601 = 584'694;  // days from 0000-03-01
  return 365 * y + y / 4 - y / 100 + y / 400 + (153 * m + 2) / 5 + day - 1 - to_1601;
}

// "2024-03-09", `between`, "10:00:00.123": seconds since 1601 and the digits behind the point.
bool take_time(std::string_view& text, std::string_view between, std::uint64_t& seconds,
               std::uint64_t& fraction, std::size_t fraction_digits) {
  std::uint64_t year, month, day, hour, minute, second;
  if (!take_number(text, 0, year) || !take(text, "-") || !take_number(text, 2, month) ||
      !take(text, "-") || !take_number(text, 2, day) || !take(text, between) ||
      !take_number(text, 2, hour) || !take(text, ":") || !take_number(text, 2, minute) ||
      !take(text, ":") || !take_number(text, 2, second) || !take(text, ".") ||
      !take_number(text, fraction_digits, fraction)) {
    return false;
  }
  if (year < 1601 || year > 60'000 || month < 1 || month > 12 || day < 1) return false;
  seconds = 86'400 * days_to(year, month, day) + 3600 * hour + 60 * minute + second;
  return true;
}

// The FILETIME of "2017-12-26T13:10:29.1368791Z", or of its decimal digits, which stand for a time
// beyond the year 9999; `end` is what comes behind it.
bool take_iso_time(std::string_view text, char end, std::uint64_t& time) {
  std::uint64_t seconds, ticks;
  std::string_view rest = text;
  if (take_time(rest, "T", seconds, ticks, 7) && take(rest, "Z") && rest.starts_with(end)) {
    time = 10'000'000 * seconds + ticks;
    return true;
  }
  return take_number(text, 0, time) && text.starts_with(end);
}

std::size_t line_end(std::string_view text, bool last) {
  const std::size_t at = text.find('\n');
  if (at != npos) return at + 1;
  return last ? text.size() : npos;
}

// A line end inside quotes belongs to a cell.
std::size_t row_end(std::string_view text, bool last) {
  bool quoted = false;
  for (std::size_t from = 0;;) {
    const std::size_t at = text.find('\n', from);
    const std::string_view line = text.substr(from, at == npos ? npos : at - from);
    quoted ^= std::count(line.begin(), line.end(), '"') % 2 != 0;
    if (at == npos) return last ? text.size() : npos;
    if (!quoted) return at + 1;
    from = at + 1;
  }
}

bool l2t_time(std::string_view item, std::uint64_t& time) {
  std::uint64_t seconds, milliseconds;
  if (!take_time(item, ", ", seconds, milliseconds, 3) || !item.starts_with(',')) return false;
  time = 1000 * seconds + milliseconds;
  return true;
}

// A name from the log may hold a line end; what is behind it does not begin with a time.
std::size_t l2t_end(std::string_view text, bool last) {
  constexpr std::size_t longest_time = 32;
  for (std::size_t from = 0;;) {
    const std::size_t at = text.find('\n', from);
    if (at == npos) return last ? text.size() : npos;
    const std::string_view behind = text.substr(at + 1);
    if (behind.size() < longest_time && !last) return npos;
    std::uint64_t time = 0;
    if (behind.empty() || l2t_time(behind, time)) return at + 1;
    from = at + 1;
  }
}

// Names hold no bar, but they may hold a line end: a row is complete with its tenth bar.
std::size_t body_end(std::string_view text, bool last) {
  std::size_t bars = 0;
  for (std::size_t at = 0; at < text.size(); ++at) {
    bars += text[at] == '|';
    if (text[at] == '\n' && bars >= 10) return at + 1;
  }
  return last ? text.size() : npos;
}

bool body_time(std::string_view item, std::uint64_t& time) {
  const std::size_t bar = item.rfind('|');
  if (bar == npos) return false;
  std::int64_t seconds = 0;
  const char* const end = item.data() + item.size();
  if (std::from_chars(item.data() + bar + 1, end, seconds).ec != std::errc()) return false;
  time = static_cast<std::uint64_t>(seconds) ^ (std::uint64_t{1} << 63);
  return true;
}

bool csv_time(std::string_view item, std::uint64_t& time) { return take_iso_time(item, ',', time); }

bool elastic_time(std::string_view item, std::uint64_t& time) {
  return take(item, "{\"@timestamp\":\"") && take_iso_time(item, '"', time);
}

// A quote inside a text is escaped, so what stands in a text is not taken for the member.
bool timesketch_time(std::string_view item, std::uint64_t& time) {
  constexpr std::string_view member = ",\"timestamp\":";
  const std::size_t at = item.find(member);
  if (at == npos) return false;
  std::int64_t microseconds = 0;
  const char* const end = item.data() + item.size();
  if (std::from_chars(item.data() + at + member.size(), end, microseconds).ec != std::errc()) {
    return false;
  }
  time = static_cast<std::uint64_t>(microseconds) ^ (std::uint64_t{1} << 63);
  return true;
}

// The event's own time, else that of the record's header.
bool tree_time(std::string_view item, std::uint64_t& time) {
  std::string_view text =
      json_text_at(item, {"Event", "System", "TimeCreated", "#attributes", "SystemTime"});
  if (!text.empty()) {
    const std::string quoted = std::string(text) + '"';
    if (take_iso_time(quoted, '"', time)) return true;
    time = parse_iso8601(std::string(text));
    if (time != 0) return true;
  }
  text = json_text_at(item, {"zanvik", "written"});
  return !text.empty() && take_iso_time(std::string(text) + '"', '"', time);
}

}  // namespace

std::span<const result_form> result_forms() {
  static constexpr result_form forms[] = {
      {"jsonl", "{\"Event\":", false, line_end, tree_time},
      {"timesketch", "{\"message\":", false, line_end, timesketch_time},
      {"elastic", "{\"@timestamp\":", false, line_end, elastic_time},
      {"csv", "time,log,record,", true, row_end, csv_time},
      {"l2t", "date,time,timezone,", true, l2t_end, l2t_time},
      {"bodyfile", "md5|name|inode|", true, body_end, body_time},
  };
  return forms;
}

const result_form* form_of_result(std::string_view head) {
  for (const result_form& form : result_forms()) {
    if (head.starts_with(form.begins)) return &form;
  }
  return nullptr;
}

}  // namespace zanvik
