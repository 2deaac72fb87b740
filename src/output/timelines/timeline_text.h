// Texts of the two timeline forms that do not depend on a record's fields: their headers, the
// inode, a time of the body file.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "options/output_format.h"

namespace zanvik {

// The header of the log2timeline form, which stands once in a run: 17 columns.
std::string timeline_header(const output_format& format);

// Decimal digits, or with `base16` "0x" and at least 8 digits.
std::string inode_text(std::uint64_t value, bool base16);

inline constexpr std::string_view body_header =
    "md5|name|inode|mode as string|uid|gid|size|access time|modify time|mft time|create time\n";

// Seconds since 1970, rounded down, so below zero before it; 0 for a count that is no time.
std::int64_t body_seconds(std::uint64_t filetime);

}  // namespace zanvik
