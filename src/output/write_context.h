// What a writer needs besides the output format: the log that the records are from, and the options
// of the run that change the columns. Views are into the caller's data, valid during one call.
#pragma once

#include <string_view>

#include "events/log_source.h"

namespace zanvik {

struct write_context {
  log_source log = {};        // its path is in each row; its channel is the label of timeline rows
  bool inc_slack = false;     // `-inc_slack`: records out of range are shown, column "del"
  bool show_offsets = false;  // `-show_offsets`: column "rec offset"
  // Used only by the timelines.
  bool allparams = false;              // `-allparams`: body file names list all fields
  std::string_view username = {};      // `-username`
  std::string_view hostname = {};      // `-hostname`
  std::string_view program_name = {};  // shown in the format column
};

}  // namespace zanvik
