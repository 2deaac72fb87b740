// A log as classified by the classic door: what reports and timelines use.
#pragma once

#include <cstdint>
#include <string>

namespace zanvik {

struct classified_log {
  std::string path;
  std::string channel;      // lower case; the name of the log if its channel is not known
  bool is_evtx = true;      // otherwise the legacy kind
  std::uint64_t inode = 0;  // 0 if the file system has no inodes, or the log is not a file
};

}  // namespace zanvik
