// Works through the logs of a run: the built-in reports that were asked for, then the report of
// the command file, then the plain listing.
#pragma once

#include "commands/report_command.h"
#include "run/log_run.h"

namespace zanvik {

// What the plain listing asks of a log: one command for each event ID that was asked for, which by
// default is any.
CommandSet listing_commands(const evt_output_options& options, const LogEntry& log);

// Returns true when any of the reports gave results.
bool run_reports(log_run& run);

}  // namespace zanvik
