// A log as the classic door has classified it: what reports and timelines go by.
#pragma once

#include <cstdint>
#include <string>

namespace zanvik {

struct classified_log {
  std::string path;
  std::string channel;      // lower case; what the log is called where its channel is not known
  bool is_evtx = true;      // otherwise the legacy kind
  std::uint64_t inode = 0;  // 0 where the log is no file of a file system that has them
};

}  // namespace zanvik
