// The statistics file of `-stats`.
#pragma once

#include <fstream>

#include "run/log_run.h"

namespace zanvik {

// Opens the file of `-stats` on `stream`, truncating it, and turns the counting of `run` on.
// Returns false if no file was requested or its folder does not exist. A file that cannot be
// created in an existing folder gives true, with nothing counted: the run continues without
// statistics and without a message. `stream` has to outlive the run.
[[nodiscard]] bool open_stats_file(log_run& run, std::ofstream& stream);

// Writes the block of the log read last, if there is a statistics file that accepts it.
void write_run_statistics(log_run& run);

}  // namespace zanvik
