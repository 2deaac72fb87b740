// The statistics file of `-stats`.
#pragma once

#include <fstream>

#include "run/evt_output_options.h"

namespace zanvik {

// Opens `options.stats_file` on `stream`, truncating it, and makes `options.stats_stream` point to
// it. Returns false when no file was asked for or its folder does not exist. A file that cannot be
// made in an existing folder gives true all the same, with the statistics turned off: the run goes
// on without them and without a word. `stream` has to outlive the use of `options.stats_stream`.
[[nodiscard]] bool open_stats_file(evt_output_options& options, std::ofstream& stream);

// Writes the block of the log walked last, when there is a statistics file and it takes it.
void write_run_statistics(evt_output_options& options);

}  // namespace zanvik
