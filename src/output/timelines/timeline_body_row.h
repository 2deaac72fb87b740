// One row of the body file form (11 columns with a bar between), and the plain way to write it.
//
// Only the bars in the name are replaced. Line ends in it stay as they are, so that a name with one
// breaks its line in two: meant, the form knows no way to keep them.
#pragma once

#include <cstdint>
#include <ostream>
#include <string>
#include <string_view>

namespace zanvik {

struct body_row {
  std::string md5;
  std::string name;
  std::uint64_t inode = 0;
  std::string mode;
  std::uint64_t uid = 0;
  std::uint64_t gid = 0;
  std::uint64_t size = 0;
  std::int64_t modify_time = 0;  // the times in seconds since 1970
  std::int64_t access_time = 0;
  std::int64_t mft_time = 0;
  std::int64_t create_time = 0;
};

// Seconds since 1970, rounded down, so below zero before it; 0 for a count that is no time.
std::int64_t body_seconds(std::uint64_t filetime);

inline constexpr std::string_view body_header =
    "md5|name|inode|mode as string|uid|gid|size|access time|modify time|mft time|create time\n";

// Writes the header if the flag is on, and clears it; then the row's line.
void write_body_row(bool& header_pending, std::ostream& out, const body_row& row);

}  // namespace zanvik
