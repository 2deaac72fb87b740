#include "reference/timeline_body_row.h"

#include "base/text.h"
#include "output/timelines/timeline_text.h"

namespace zanvik {

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
