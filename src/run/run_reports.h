// Works through the logs of a run: the built-in reports that were asked for, then the report of
// the command file, then the plain listing.
#pragma once

#include "run/evt_output_options.h"

namespace zanvik {

// Results go to `options.results_stream`, which becomes standard output when it is null. Returns
// true when any of the reports gave results.
bool run_reports(evt_output_options& options);

}  // namespace zanvik
