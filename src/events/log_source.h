// Which log an event or a record is from. Both doors use it.
#pragma once

#include <cstdint>
#include <string>

namespace zanvik {

enum class log_kind : std::uint8_t { evtx, evt };

struct log_source {
  std::string path;     // as given, or as found below a folder that was given; "-" for the input
  std::string channel;  // of the classic door, lower case: the log's name if it is not known
  log_kind kind = log_kind::evtx;
  std::uint64_t device = 0;
  std::uint64_t inode = 0;  // 0 if not known, or if the log is not a file; always in the classic door
  bool deleted = false;     // a file of an image that is deleted
};

}  // namespace zanvik
