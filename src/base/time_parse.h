// Dates and times from text. Bad text gives false (or 0) and leaves outputs unchanged. No field may
// be longer than its rule says, and the days of a month are not checked: "02/29/2013" is a date and
// means March 1.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

#include "base/time_value.h"

namespace zanvik {

struct month_day_year {
  unsigned month = 0;  // 1 to 12
  unsigned day = 0;    // 1 to 31
  unsigned year = 0;
};

// "M/D/Y" or "M-D-Y", where the middle may be a month's three letters and the day comes first. Up
// to 2, 3 and 4 characters. A year of two characters is 20xx below 31, else 19xx.
std::optional<month_day_year> parse_date_mdy(std::string_view text);

struct clock_time {
  double hours = 0;  // "pm" has added its 12, even to 12 itself
  double minutes = 0;
  double seconds = 0;
};

// "H:M" or "H:M:S", with a fraction of any field. "pm" adds 12 hours, so "12:30 pm" is hour 24,
// which is meant; "12:30 am" is hour 12.
std::optional<clock_time> parse_clock(std::string_view text);

// Reads a date whose parts are in the order that `order` spells with Y, M (or Mon, a month's name)
// and D, and an optional time. A year below 31 is 20xx, one below 100 19xx. A missing part or one
// that is not a number fails; a month of 0 is accepted and means the December before.
bool parse_date_ymd(std::string_view date_text, std::string_view time_text, std::string_view order,
                    char separator, qx::_windows_systemtime& out);

// The FILETIME of "2012-03-01T12:34:56.1234567Z", with exactly seven digits; the time may be
// missing. 0 if it cannot be read.
std::uint64_t parse_iso8601(std::string_view text);

}  // namespace zanvik
