// Works through the logs of a run: the built-in reports that were asked for, then the report of
// the command file, then the plain listing.
#pragma once

#include "run/log_run.h"

namespace zanvik {

// Returns true when any of the reports gave results.
bool run_reports(log_run& run);

}  // namespace zanvik
