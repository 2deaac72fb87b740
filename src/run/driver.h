// The whole run, from the arguments to the exit status; `run_program` is where this folder, and
// with it the program, is entered. Options become one `evt_output_options`, the results stream and
// the statistics file are opened, and the logs are worked through: those named by `-log` in one go,
// or one at a time as their names arrive.
#pragma once

namespace zanvik {

// Returns the exit status: 0, or -1 when the options were refused or the results file could not be
// opened. Damaged and unreadable logs are no error.
int run_program(int argc, char** argv);

}  // namespace zanvik
