// The help text.
#pragma once

namespace zanvik {

// Prints it to standard error.
void print_usage();

}  // namespace zanvik
