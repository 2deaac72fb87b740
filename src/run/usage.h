// Help text and version, on standard error.
#pragma once

namespace zanvik {

// The help text.
void print_usage();

// One line, which is also the first line of the help text.
void print_version();

}  // namespace zanvik
