// What a writer has to know besides the output format: the log in hand, and the two options of the
// log run that change the columns. A view into the caller's data, for the length of one call.
#pragma once

#include <string_view>

namespace zanvik {

struct write_context {
  std::string_view channel = {};  // of the current log; becomes the label of timeline rows
  bool inc_slack = false;         // `-inc_slack`: records out of range are shown, column "del"
  bool show_offsets = false;      // `-show_offsets`: column "rec offset"
};

}  // namespace zanvik
