// Keeps a run from overwriting what it reads: event logs are evidence.
//
// In: the arguments of a run, before any option is taken out of them and before any file is opened
// for writing. Out: the first output option whose file the run reads or may read. Files are
// compared by device and inode, so links and other spellings of a path do not matter.
#pragma once

#include <optional>
#include <string>

#include "options/argument_list.h"

namespace zanvik {

struct output_over_input {
  std::string option;  // "-out", "-outfile", "-stats" or "-diags"
  std::string path;    // as given
  bool certain;        // false: a log that the names on standard input or the walk may lead to
};

// Inputs are the logs of `-log`, the command file, with `-pipe` the file on standard input, and
// with `-pipe` or `-enumdir` any event log. Only an existing regular file can clash.
std::optional<output_over_input> find_output_over_input(const argument_list& args);

}  // namespace zanvik
