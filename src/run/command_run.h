// Runs the commands of a report over their logs: opens each log, reads it block by block, and
// passes the selected records to the writers.
#pragma once

#include "commands/report_command.h"
#include "run/log_run.h"

namespace zanvik {

// Runs the commands of each log in `set`, log by log in order of their keys. A log that cannot be
// opened or read is skipped without a message. Returns true if a log was walked to its end.
bool run_command_set(const CommandSet& set, log_run& run);

}  // namespace zanvik
