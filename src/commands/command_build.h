// From the tokens of report commands to the commands: `build_command_set` reads each command's
// options and adds those that fit the current log to a set.
//
// Options may be in any order and their names in any case; unknown tokens are ignored. A command
// that cannot be used is dropped without a message.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "commands/command_list.h"
#include "commands/report_command.h"
#include "events/log_source.h"
#include "options/output_format.h"
#include "options/selection_options.h"

namespace zanvik {

// Finds kind and channel of the log at `path`; false if it is not a log.
using log_classifier = std::function<bool(log_source& log, const std::string& path)>;

// What commands need from the run. `log` is changed: the first command that gets as far as its log
// decides which log that is.
struct command_context {
  log_source& log;
  const selection_options& selection;           // times and text, which override a command's own
  const output_format& format;                  // how a command's own times are written
  const std::vector<std::string>& hist_fields;  // for commands without `-hist`
  const log_classifier& classify;
};

// Adds the commands of `list` that fit the log to `set`, which is cleared first unless `append` is
// set. Returns true if at least one was added.
bool build_command_set(CommandSet& set, const CommandList& list, const command_context& context,
                       bool append);

}  // namespace zanvik
