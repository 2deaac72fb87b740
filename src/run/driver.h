// The whole run, from the arguments to the exit status; `run_program` is where this folder, and
// with it the program (main.cpp), is entered. Options become one `evt_output_options`, the results
// stream and the statistics file are opened, and the logs are worked through: those named by `-log`
// in one go, or one at a time as their names arrive.
//
//   evt_output_options.h  options and state of a run, filled by options_parse.cpp
//   usage.h, version.h    what the program says of itself
//   log_list.h            the logs of a run: kind and channel; log_file.h is the open one
//   stream_run.h          names that arrive one at a time; each then goes the road of the others
//   run_reports.h         what is asked of the logs: report_runs.h for reports, then the listing
//   command_run.h         one log, read and handed on
//   stats_file.h          the file of `-stats`
#pragma once

namespace zanvik {

// Returns the exit status: 0, or -1 when the options were refused or the results file could not be
// opened. Damaged and unreadable logs are no error.
int run_program(int argc, char** argv);

}  // namespace zanvik
