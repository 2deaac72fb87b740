// The statistics file of `-stats`.
#pragma once

#include <fstream>

#include "run/log_run.h"

namespace zanvik {

// Opens the file of `-stats` on `stream`, truncating it, and turns the counting of `run` on.
// Returns false when no file was asked for or its folder does not exist. A file that cannot be made
// in an existing folder gives true all the same, with nothing counted: the run goes on without
// statistics and without a word. `stream` has to outlive the run.
[[nodiscard]] bool open_stats_file(log_run& run, std::ofstream& stream);

// Writes the block of the log walked last, when there is a statistics file and it takes it.
void write_run_statistics(log_run& run);

}  // namespace zanvik
