// The run over logs whose names arrive one at a time, from standard input or from a folder walk.
//
// Each name that passes the filters and is that of a log is worked through by itself, so memory
// does not grow with the number of names. What is no log is passed over without a word; whatever
// goes wrong in a log costs that log and a message.
#pragma once

#include "run/log_run.h"

namespace zanvik {

// Works through the names of `-pipe` or, without it, of the walk of `-enumdir`. On return
// `run.logs` holds the last log that was recognised.
void run_stream(log_run& run);

}  // namespace zanvik
