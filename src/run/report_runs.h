// The reports of a run: the built-in ones, a runner for each, and that of the command file.
#pragma once

#include "run/log_run.h"

namespace zanvik {

// Each runs its report over the log in hand. Returns true when that log was walked to its end,
// false when the report has nothing for it.
bool run_pw(log_run& run);
bool run_time(log_run& run);
bool run_logon(log_run& run);
bool run_startstop(log_run& run);
bool run_creds(log_run& run);
bool run_partition(log_run& run);
bool run_usb(log_run& run);

// Runs the built-in reports that were asked for, each over all logs of the list that it concerns.
// Returns true when one of them gave results.
bool run_builtin_reports(log_run& run);

// Runs the commands of `-cmdfile` over all logs of the list.
bool run_command_file(log_run& run);

// With `-strict`, at the end of a run: notes the commands of `-cmdfile` that took part in no log.
void check_command_use(log_run& run);

}  // namespace zanvik
