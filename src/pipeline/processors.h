// How many processors this process may use.
#pragma once

namespace zanvik {

// Those that it may run on, or fewer where a control group limits its share of time; at least 1, at
// most limits::threads.
unsigned usable_processors();

}  // namespace zanvik
