// What a writer needs besides the output format: the current log, and the options of the run that
// change the columns. A view into the caller's data, valid during one call.
#pragma once

#include <cstdint>
#include <string_view>

namespace zanvik {

struct write_context {
  std::string_view channel = {};  // of the current log; the label of timeline rows
  bool inc_slack = false;         // `-inc_slack`: records out of range are shown, column "del"
  bool show_offsets = false;      // `-show_offsets`: column "rec offset"
  // Used only by the timelines.
  bool allparams = false;              // `-allparams`: body file names list all fields
  bool log_is_evtx = true;             // kind of the current log
  std::uint64_t log_reserved = 0;      // of the current log; becomes the inode
  std::string_view username = {};      // `-username`
  std::string_view hostname = {};      // `-hostname`
  std::string_view program_name = {};  // shown in the format column
};

}  // namespace zanvik
