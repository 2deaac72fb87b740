// What the program says about itself when it is asked to, on standard error.
#pragma once

namespace zanvik {

// The help text.
void print_usage();

// One line, which is also the first one of the help text.
void print_version();

}  // namespace zanvik
