// SIGINT and SIGTERM as a request to end the run: reading stops, what is complete is written.
//
// The first signal sets a flag, which loops look at between pieces of work. The second one ends the
// program at once, as it does without this.
#pragma once

namespace zanvik {

// From now on these signals set the flag. One that the caller of the program ignores stays ignored.
void catch_stop_signals();

// The number of the signal that came; 0 when none did.
int stop_signal();

}  // namespace zanvik
