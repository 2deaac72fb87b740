#include "base/time_format.h"

#include <algorithm>

#include "base/digits.h"
#include "base/month_names.h"

namespace zanvik {
namespace {

constexpr auto npos = std::string_view::npos;
constexpr unsigned most_fraction_digits = 9;

void append_padded(std::string& out, std::uint64_t value, unsigned min_width) {
  char digits[24];
  const char* end = write_decimal(digits, value, min_width);
  out.append(digits, static_cast<std::size_t>(end - digits));
}

void append_month(std::string& out, const qx::_windows_systemtime& parts, bool as_name) {
  if (as_name) {
    out += short_month_name(parts.month);
  } else {
    append_padded(out, parts.month, 2);
  }
}

// hours and minutes, then what else is wanted.
void append_hours_minutes(std::string& out, const qx::_windows_systemtime& parts) {
  append_padded(out, parts.hour, 2);
  out += ':';
  append_padded(out, parts.minute, 2);
}

void append_seconds(std::string& out, const qx::_windows_systemtime& parts) {
  if (!out.empty()) out += ':';
  append_padded(out, parts.second, 2);
}

// 3 to 9 digits, cut off; any other count gives no fraction.
void append_fraction(std::string& out, const qx::_windows_systemtime& parts, std::size_t digits) {
  if (digits < 3 || digits > most_fraction_digits) return;
  std::uint64_t value = parts.nanoseconds;
  for (std::size_t i = most_fraction_digits; i > digits; --i) value /= 10;
  out += '.';
  append_padded(out, value, static_cast<unsigned>(digits));
}

// From the first "xxx" to the last `x`; 0 without an "xxx".
std::size_t fraction_digits_of(std::string_view time_format) {
  const auto first = time_format.find("xxx");
  return first == npos ? 0 : time_format.rfind('x') - first + 1;
}

char separator_of(std::string_view date_format, char fallback) {
  for (const char separator : {'/', '-', ' '}) {
    if (date_format.find(separator) != npos) return separator;
  }
  return fallback;
}

void append_year(std::string& out, const qx::_windows_systemtime& parts, std::string_view format) {
  const bool two = format.find("yyyy") == npos && format.find("yy") != npos;
  append_padded(out, two ? parts.year % 100u : parts.year, two ? 2 : 4);
}

std::string date_by_format(const qx::_windows_systemtime& parts, std::string_view format) {
  const auto y = format.find("yy");
  const auto m = format.find("mm");
  const auto d = format.find("dd");
  const bool complete = y != npos && m != npos && d != npos;
  const char separator = complete ? separator_of(format, '/') : '/';
  const bool month_first = !complete || m < d;
  const bool year_first = complete && y == 0;

  std::string out;
  if (year_first) {
    append_year(out, parts, format);
    out += separator;
  }
  if (!month_first) {
    append_padded(out, parts.day, 2);
    out += separator;
  }
  append_month(out, parts, format.find("mmm") != npos);
  if (month_first) {
    out += separator;
    append_padded(out, parts.day, 2);
    const bool comma = complete && d + 2 < format.size() && format[d + 2] == ',';
    if (separator == ' ' && comma) out += ',';
  }
  if (!year_first) {
    out += separator;
    append_year(out, parts, format);
  }
  return out;
}

std::string time_by_format(const qx::_windows_systemtime& parts, std::string_view format) {
  std::string out;
  if (format.find("hh:mm") != npos) append_hours_minutes(out, parts);
  if (format.find("ss") != npos) append_seconds(out, parts);
  append_fraction(out, parts, fraction_digits_of(format));
  return out;
}

std::string date_by_descriptor(const qx::_windows_systemtime& parts,
                               const format_descriptor& descriptor) {
  const bool named = (descriptor.flags & format_descriptor::month_name) != 0;
  const unsigned year_width = (descriptor.flags & format_descriptor::year_four) != 0 ? 4 : 2;
  const bool month_first = (descriptor.flags & format_descriptor::month_day_year) != 0;
  std::string out;
  if (month_first || (descriptor.flags & format_descriptor::day_month_year) != 0) {
    if (!month_first) append_padded(out, parts.day, 2);
    if (!month_first) out += descriptor.separator;
    append_month(out, parts, named);
    out += descriptor.separator;
    if (month_first) append_padded(out, parts.day, 2);
    if (month_first) out += descriptor.separator;
    append_padded(out, parts.year, year_width);
  } else if ((descriptor.flags & format_descriptor::year_month_day) != 0 && !named) {
    append_padded(out, parts.year, year_width);
    out += descriptor.separator;
    append_month(out, parts, false);
    out += descriptor.separator;
    append_padded(out, parts.day, 2);
  }
  return out;
}

// Sets the flags of the date; false if it lacks a part or its order has no bit.
bool set_date_flags(format_descriptor& out, std::string_view format) {
  const auto y = format.find("yy");
  const auto m = format.find("mm");
  const auto d = format.find("dd");
  unsigned flags = 0;
  if (m != npos) {
    const bool named = format.find("mmm") != npos;
    flags |= named ? format_descriptor::month_name : format_descriptor::month_digits;
  }
  if (y != npos) {
    const bool four = format.find("yyyy") != npos;
    flags |= four ? format_descriptor::year_four : format_descriptor::year_two;
  }
  if (format.find(',') != npos) flags |= format_descriptor::comma;
  unsigned order = 0;
  if (y != npos && m != npos && d != npos) {
    if (d < m && m < y) order = format_descriptor::day_month_year;
    if (m < d && d < y) order = format_descriptor::month_day_year;
    if (y < m && m < d) order = format_descriptor::year_month_day;
  }
  out.flags = static_cast<std::uint8_t>(flags | order);
  return order != 0;
}

}  // namespace

bool build_format_descriptor(format_descriptor& out, std::string_view date_format,
                             std::string_view time_format, bool pair_datetime) {
  out = {};
  bool complete = true;
  if (!date_format.empty()) {
    out.separator = separator_of(date_format, 0);
    complete = set_date_flags(out, date_format);
  }
  const auto digits = std::min<std::size_t>(fraction_digits_of(time_format), most_fraction_digits);
  out.time_flags = static_cast<std::uint8_t>(digits << 1 | (pair_datetime ? 1 : 0));
  return complete;
}

bool format_with_strings(std::string& out_date, std::string& out_time, const qx::time& time,
                         std::string_view date_format, std::string_view time_format) {
  if (!time.valid()) return false;
  const qx::_windows_systemtime parts = time.system_time();
  if (!date_format.empty()) out_date = date_by_format(parts, date_format);
  if (!time_format.empty()) out_time = time_by_format(parts, time_format);
  return true;
}

bool format_with_descriptor(std::string& out_date, std::string& out_time, const qx::time& time,
                            const format_descriptor& descriptor) {
  out_date.clear();
  out_time.clear();
  if (!time.valid()) return false;
  if (descriptor.separator == 0) {
    format_with_strings(out_date, out_time, time, "yyyy-mm-dd", "hh:mm:ss.xxx");
    return false;  // although there is text: callers get the default form anyway
  }
  const qx::_windows_systemtime parts = time.system_time();
  out_date = date_by_descriptor(parts, descriptor);
  append_hours_minutes(out_time, parts);
  append_seconds(out_time, parts);
  append_fraction(out_time, parts, descriptor.fraction_digits());
  return true;
}

void format_default(std::string& out_date, std::string& out_time, const qx::time& time,
                    bool with_fraction, bool short_year, bool nine_digits) {
  out_date.clear();
  out_time.clear();
  if (!time.valid()) return;
  const qx::_windows_systemtime parts = time.system_time();
  const unsigned short_value = parts.year > 1999 ? parts.year - 2000u : parts.year - 1900u;
  append_padded(out_date, short_year ? short_value : parts.year, short_year ? 2 : 4);
  out_date += '-';
  append_padded(out_date, parts.month, 2);
  out_date += '-';
  append_padded(out_date, parts.day, 2);
  append_hours_minutes(out_time, parts);
  append_seconds(out_time, parts);
  if (with_fraction) append_fraction(out_time, parts, nine_digits ? 9 : 3);
}

char* write_system_value(char* out, const qx::_windows_systemtime& parts) {
  const auto put = [&out](unsigned value, unsigned width, std::string_view behind) {
    out = write_decimal(out, value, width);
    out = std::copy(behind.begin(), behind.end(), out);
  };
  put(parts.month, 2, "/");
  put(parts.day, 2, "/");
  put(parts.year, 4, " : ");
  put(parts.hour, 2, ":");
  put(parts.minute, 2, ":");
  put(parts.second, 2, ".");
  put(parts.millisecond, 3, "");
  return out;
}

void format_system_value(std::string& out, const qx::_windows_systemtime& parts) {
  char text[48];
  out.assign(text, static_cast<std::size_t>(write_system_value(text, parts) - text));
}

bool format_filetime_value(std::string& out, std::uint64_t filetime) {
  out.clear();
  if (filetime == 0) return false;
  std::string date;
  std::string clock;
  const qx::time time(filetime, qx::type_time::filetime);
  format_with_strings(date, clock, time, "yyyy-mm-dd", "hh:mm:ss.xxxxxxxxx");
  out = date + ' ' + clock;
  return true;
}

}  // namespace zanvik
