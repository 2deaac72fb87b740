// Times as text: by the two format strings, by their digest, in the default and the value forms.
//
// Each function sets its outputs. A fraction is cut, never rounded. This is the plain way; the
// writers use time_writer.h, which tests compare with it.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "base/format_descriptor.h"
#include "base/time_value.h"

namespace zanvik {

// Makes the digest of the two formats. An empty format skips its part. False if the date format
// lacks its year, month or day, or has them in an order without a bit: `out` then has no order
// bits, but is filled otherwise.
bool build_format_descriptor(format_descriptor& out, std::string_view date_format,
                             std::string_view time_format, bool pair_datetime);

// By the formats. An empty format leaves its output unchanged. False, with both outputs unchanged,
// for a time that is not valid.
bool format_with_strings(std::string& out_date, std::string& out_time, const qx::time& time,
                         std::string_view date_format, std::string_view time_format);

// By the digest. False with empty outputs for a time that is not valid; also false, with
// "yyyy-mm-dd" and "hh:mm:ss.xxx" in them, if the digest has no separator. Unlike above, a year is
// never cut to two digits; this is meant.
bool format_with_descriptor(std::string& out_date, std::string& out_time, const qx::time& time,
                            const format_descriptor& descriptor);

// "2012-03-01", or with `short_year` "12-03-01", and "12:34:56.123", with `nine_digits` nine of
// them, without `with_fraction` none. Empty for a time that is not valid.
void format_default(std::string& out_date, std::string& out_time, const qx::time& time,
                    bool with_fraction, bool short_year, bool nine_digits);

// The form of a SYSTEMTIME value, "03/01/2012 : 12:34:56.123", from parts of any value.
void format_system_value(std::string& out, const qx::_windows_systemtime& parts);
// The same at `out`; at most 48 bytes. Returns its end.
char* write_system_value(char* out, const qx::_windows_systemtime& parts);

// The form of a FILETIME value, "2012-03-01 12:34:56.123456700": false and empty for 0. An invalid
// one leaves only the blank between its two empty halves.
bool format_filetime_value(std::string& out, std::uint64_t filetime);

}  // namespace zanvik
