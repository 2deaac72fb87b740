// The whole run, from the arguments to the exit status. `run_program` is the entry to this folder,
// and main.cpp calls it. Options become one `evt_output_options`, the results stream and the
// statistics file are opened, and the logs are read: those named by `-log` together, or one at a
// time as their names arrive.
//
//   evt_output_options.h  the options of a run, filled by options_parse.cpp
//   usage.h, version.h    help text and version
//   log_list.h            the logs of a run: kind and channel; log_file.h is the open one
//   stream_run.h          names that arrive one at a time; each log is then read like the others
//   run_reports.h         what to do with the logs: report_runs.h for reports, then the listing
//   command_run.h         one log, read and passed on
//   stats_file.h          the file of `-stats`
#pragma once

namespace zanvik {

// Returns the exit status: 0, or -1 if the options were refused or the results file could not be
// opened. Damaged and unreadable logs are not an error.
int run_program(int argc, char** argv);

}  // namespace zanvik
