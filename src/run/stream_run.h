// The run over logs whose names arrive one at a time, from standard input or from a folder walk.
//
// Each name that passes the filters and names a log is processed alone, so memory does not grow
// with the number of names. A file that is not a log is skipped without a message; an error in a
// log costs that log and a message.
#pragma once

#include "run/log_run.h"

namespace zanvik {

// Processes the names of `-pipe` or, without it, of the walk of `-enumdir`. Afterwards `run.logs`
// has the last log that was recognised.
void run_stream(log_run& run);

}  // namespace zanvik
