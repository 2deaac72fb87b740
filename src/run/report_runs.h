// The reports of a run: the built-in ones, a runner for each, and that of the command file.
#pragma once

#include "run/log_run.h"

namespace zanvik {

// Each runs its report over the current log. Returns true if that log was walked to its end, false
// if the report has nothing for it.
bool run_pw(log_run& run);
bool run_time(log_run& run);
bool run_logon(log_run& run);
bool run_startstop(log_run& run);
bool run_creds(log_run& run);
bool run_partition(log_run& run);
bool run_usb(log_run& run);

// Runs the requested built-in reports, each over all logs of the list that it is for. Returns true
// if one of them gave results.
bool run_builtin_reports(log_run& run);

// Runs the commands of `-cmdfile` over all logs of the list.
bool run_command_file(log_run& run);

// With `-strict`, at the end of a run: notes the commands of `-cmdfile` that were used for no log.
void check_command_use(log_run& run);

}  // namespace zanvik
