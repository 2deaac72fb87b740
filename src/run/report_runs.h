// The reports of a run: the built-in ones, a runner for each, and that of the command file.
#pragma once

#include "run/evt_output_options.h"

namespace zanvik {

// Each runs its report over the log in hand. Returns true when that log was walked to its end,
// false when the report has nothing for it.
bool run_pw(evt_output_options& options);
bool run_time(evt_output_options& options);
bool run_logon(evt_output_options& options);
bool run_startstop(evt_output_options& options);
bool run_creds(evt_output_options& options);
bool run_partition(evt_output_options& options);
bool run_usb(evt_output_options& options);

// Runs the built-in reports that were asked for, each over all logs of the list that it concerns.
// Returns true when one of them gave results.
bool run_builtin_reports(evt_output_options& options);

// Runs the commands of `-cmdfile` over all logs of the list.
bool run_command_file(evt_output_options& options);

}  // namespace zanvik
