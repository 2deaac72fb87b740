// Texts of the two timeline forms that do not depend on a record's fields: their headers, the
// inode, a time of the body file.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "options/output_format.h"

namespace zanvik {

// The header of the log2timeline form, once for a run: 17 columns.
std::string timeline_header(const output_format& format);

// Decimal digits, or with `base16` "0x" and at least 8 digits.
std::string inode_text(std::uint64_t value, bool base16);

inline constexpr std::string_view body_header =
    "md5|name|inode|mode as string|uid|gid|size|access time|modify time|mft time|create time\n";

// The header of the form that `format` selects.
std::string timeline_head(const output_format& format);

// Seconds since 1970, rounded down, so negative before it; 0 for a count that is not a time.
std::int64_t body_seconds(std::uint64_t filetime);

// A time as far as a line of the form shows it by default: milliseconds, or the seconds of the body
// file. A number that rises with what is shown.
std::uint64_t shown_timeline_time(const output_format& format, std::uint64_t filetime);

}  // namespace zanvik
