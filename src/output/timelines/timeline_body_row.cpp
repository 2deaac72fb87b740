#include "output/timelines/timeline_body_row.h"

#include "base/text.h"
#include "base/time_value.h"

namespace zanvik {

std::int64_t body_seconds(std::uint64_t filetime) {
  if (!is_valid_filetime(filetime)) return 0;
  const auto ticks = static_cast<std::int64_t>(filetime - qx::unix_epoch_filetime);
  const auto per_second = static_cast<std::int64_t>(qx::ticks_per_second);
  return ticks / per_second - (ticks % per_second < 0 ? 1 : 0);
}

void write_body_row(bool& header_pending, std::ostream& out, const body_row& row) {
  if (header_pending) out << body_header;
  header_pending = false;
  std::string name = row.name;
  replace_char(name, '|', ';', false);
  std::string line = row.md5.empty() ? "0" : row.md5;
  line += '|' + name + '|' + std::to_string(row.inode) + '|' + row.mode;
  for (const std::uint64_t number : {row.uid, row.gid, row.size}) {
    line += '|' + std::to_string(number);
  }
  for (const std::int64_t time :
       {row.access_time, row.modify_time, row.mft_time, row.create_time}) {
    line += '|' + std::to_string(time);
  }
  out << line + '\n';
}

}  // namespace zanvik
