// Dates, times and numbers from text and back, and the quick writers of times compared with the
// plain ones. A choice, a count of ticks; lines: a text, a date format, a time format.
#include <string>

#include "base/number_text.h"
#include "base/time_format.h"
#include "base/time_parse.h"
#include "base/time_value.h"
#include "base/time_writer.h"
#include "fuzz_target.h"

namespace zanvik::fuzz {
namespace {

// Whether the year can be read back from text, with all four digits.
bool is_written_with_four(const qx::time& time) {
  const auto year = time.system_time().year;
  return time.filetime() < loose_to_filetime({.year = 10000}) && year >= 1900;
}

void require_reads_back(const qx::time& time) {
  if (!time.valid() || !is_written_with_four(time)) return;
  const std::uint64_t fraction = time.filetime() % qx::ticks_per_second;
  std::string date, clock;
  (void)format_with_strings(date, clock, time, "mm/dd/yyyy", "hh:mm:ss");
  const qx::time again(date + " " + clock, true);
  require(again.filetime() == time.filetime() - fraction, "a time as options have it reads back");
  format_default(date, clock, time, true, false, true);
  const std::string iso = date + "T" + clock.substr(0, clock.size() - 2) + "Z";
  require(parse_iso8601(iso) == time.filetime(), "a time as records have it reads back");
}

void require_quick_formats(std::uint64_t filetime, std::string_view date_format,
                           std::string_view time_format) {
  const qx::time time(filetime, qx::type_time::filetime);
  require(time.valid() == is_valid_filetime(filetime), "what is a time is one");
  format_descriptor descriptor;
  (void)build_format_descriptor(descriptor, date_format, time_format, false);
  cell_time_formatter cells(descriptor);
  std::string date, clock;
  for (int round = 0; round < 2; ++round) {
    const bool plain = format_with_descriptor(date, clock, time, descriptor);
    require(cells.format(filetime) == plain, "the cells' answer");
    require_equal(cells.date(), date, "the cells' date");
    require_equal(cells.time(), clock, "the cells' time");
  }
  (void)format_with_strings(date, clock, time, date_format, time_format);
  const std::unique_ptr<char[]> room(new char[filetime_text_room]);
  const char* end = write_filetime_fixed(room.get(), filetime);
  std::string value;
  (void)format_filetime_value(value, filetime);
  require_equal({room.get(), static_cast<std::size_t>(end - room.get())}, value, "value forms");
}

void require_numbers(std::uint64_t number, std::string_view text) {
  (void)unsigned_from_text(text);
  (void)number_from_text(text);
  (void)u64_from_text(text);
  for (const bool hex : {false, true}) {
    require(u64_from_text(number_to_text(number, hex, hex ? 2 : 0)) == number,
            "a number reads back");
  }
}

}  // namespace

ZANVIK_FUZZ_TARGET(date) {
  const exact_bytes exact(bytes);
  input in(exact.span());
  const auto filetime = in.take<std::uint64_t>();
  const std::string_view text = in.take_line();
  const std::string_view date_format = in.take_line();
  const std::string_view time_format = in.take_line();
  require_reads_back(qx::time(text, true));
  require_reads_back(qx::time(filetime, qx::type_time::filetime));
  require_reads_back(qx::time(parse_iso8601(text), qx::type_time::filetime));
  const qx::time local(text, false);
  std::tm parts{};
  (void)local.local_time(parts);
  (void)local.dos_time();
  qx::_windows_systemtime broken_down;
  const char separator = text.find('/') != std::string_view::npos ? '/' : '-';
  const auto blank = text.find(' ');
  const auto clock = blank == std::string_view::npos ? "" : text.substr(blank + 1);
  for (const char* order : {"YMD", "MonDY", "DMonY"}) {
    (void)parse_date_ymd(text.substr(0, blank), clock, order, separator, broken_down);
  }
  require_quick_formats(filetime, date_format, time_format);
  require_numbers(filetime, text);
}

}  // namespace zanvik::fuzz
