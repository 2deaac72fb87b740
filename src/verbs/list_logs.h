// --list: the logs that paths lead to, without reading them.
#pragma once

#include <string>
#include <vector>

#include "source/log_finder.h"

namespace CLI {
class App;
}

namespace zanvik {

void add_list_option(CLI::App& app, bool& list);

// Writes a line for each log to standard output: size in bytes, kind, "deleted" or "-", path.
// Returns the status of the run.
int list_logs(const std::vector<std::string>& paths, carve_what carve);

}  // namespace zanvik
