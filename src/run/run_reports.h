// Runs everything over the logs of a run: the requested built-in reports, then the report of the
// command file, then the plain listing.
#pragma once

#include "commands/report_command.h"
#include "run/log_run.h"

namespace zanvik {

// The commands of the plain listing: one for each requested event ID; without any, one for all.
CommandSet listing_commands(const evt_output_options& options, const LogEntry& log);

// Returns true if any of the reports gave results.
bool run_reports(log_run& run);

}  // namespace zanvik
