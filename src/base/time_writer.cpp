#include "base/time_writer.h"

#include <algorithm>
#include <cstring>

#include "base/digits.h"
#include "base/month_names.h"

namespace zanvik {
namespace {

constexpr std::size_t clock_size = 8;  // of "hh:mm:ss"

// "hh:mm:ss.nnnnnnnnn"; 18 bytes. With fewer digits of the fraction it is the start of the same
// text.
char* write_clock(char* out, std::uint64_t ticks_of_day) {
  const auto seconds = static_cast<std::uint32_t>(ticks_of_day / qx::ticks_per_second);
  const auto ticks = static_cast<std::uint32_t>(ticks_of_day % qx::ticks_per_second);
  out = write_two_digits(out, seconds / 3600);
  *out++ = ':';
  out = write_two_digits(out, seconds / 60 % 60);
  *out++ = ':';
  out = write_two_digits(out, seconds % 60);
  *out++ = '.';
  out = write_two_digits(out, ticks / 100'000);
  out = write_two_digits(out, ticks / 1000);
  out = write_two_digits(out, ticks / 10);
  *out++ = static_cast<char>('0' + ticks % 10);
  return write_two_digits(out, 0);  // a tick is 100 ns
}

char* write_month(char* out, unsigned month, bool as_name) {
  if (!as_name) return write_two_digits(out, month);
  return std::copy_n(short_month_name(month).data(), 3, out);
}

char* write_year(char* out, const qx::civil_date& date, unsigned min_width) {
  return write_decimal(out, static_cast<std::uint64_t>(date.year), min_width);
}

// A descriptor without a separator prints in the default form.
format_descriptor printable(format_descriptor descriptor) {
  if (descriptor.separator != 0) return descriptor;
  descriptor.separator = '-';
  descriptor.flags = format_descriptor::year_four | format_descriptor::month_digits |
                     format_descriptor::year_month_day;
  descriptor.time_flags = 3 << 1;
  return descriptor;
}

}  // namespace

cell_time_formatter::cell_time_formatter(const format_descriptor& descriptor)
    : descriptor_(printable(descriptor)),
      digits_(descriptor_.fraction_digits()),
      result_(descriptor.separator != 0) {
  if (digits_ < 3 || digits_ > 9) digits_ = 0;
}

void cell_time_formatter::print_day(std::uint64_t day) {
  const auto has = [this](format_descriptor::flag f) { return (descriptor_.flags & f) != 0; };
  const qx::civil_date date = qx::civil_from_days(day);
  const unsigned year_width = has(format_descriptor::year_four) ? 4 : 2;
  const bool named = has(format_descriptor::month_name);
  const char separator = descriptor_.separator;
  char* out = date_.data();
  if (has(format_descriptor::month_day_year)) {
    out = write_month(out, date.month, named);
    *out++ = separator;
    out = write_two_digits(out, date.day);
    *out++ = separator;
    out = write_year(out, date, year_width);
  } else if (has(format_descriptor::day_month_year)) {
    out = write_two_digits(out, date.day);
    *out++ = separator;
    out = write_month(out, date.month, named);
    *out++ = separator;
    out = write_year(out, date, year_width);
  } else if (has(format_descriptor::year_month_day) && !named) {
    out = write_year(out, date, year_width);
    *out++ = separator;
    out = write_two_digits(out, date.month);
    *out++ = separator;
    out = write_two_digits(out, date.day);
  }
  day_ = day;
  day_size_ = static_cast<std::size_t>(out - date_.data());
}

bool cell_time_formatter::format(std::uint64_t filetime) {
  if (!is_valid_filetime(filetime)) {
    date_size_ = time_size_ = 0;
    return false;
  }
  const std::uint64_t day = filetime / qx::ticks_per_day;
  if (day != day_) print_day(day);
  date_size_ = day_size_;
  write_clock(time_.data(), filetime - day * qx::ticks_per_day);
  time_size_ = digits_ == 0 ? clock_size : clock_size + 1 + digits_;
  return result_;
}

char* filetime_writer::write(char* out, std::uint64_t filetime) {
  if (filetime == 0) return out;
  if (!is_valid_filetime(filetime)) {
    *out++ = ' ';  // between two empty halves
    return out;
  }
  const std::uint64_t day = filetime / qx::ticks_per_day;
  if (day != day_) {
    const qx::civil_date date = qx::civil_from_days(day);
    char* end = write_year(date_.data(), date, 4);
    *end++ = '-';
    end = write_two_digits(end, date.month);
    *end++ = '-';
    end = write_two_digits(end, date.day);
    *end++ = ' ';
    day_ = day;
    date_size_ = static_cast<std::size_t>(end - date_.data());
  }
  std::memcpy(out, date_.data(), date_.size());  // copied whole: the clock overwrites the excess
  return write_clock(out + date_size_, filetime - day * qx::ticks_per_day);
}

char* write_filetime_fixed(char* out, std::uint64_t filetime) {
  filetime_writer writer;
  return writer.write(out, filetime);
}

}  // namespace zanvik
