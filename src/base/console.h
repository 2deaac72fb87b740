// Messages and the status line, both on standard error.
//
// All messages of the program go through `prob_message`. Nothing here looks whether standard error
// is a terminal. A write that fails is passed over.
#pragma once

namespace zanvik {

// Erases the status line.
void clear_status();

// Characters of a status line at the most.
inline constexpr int status_width_max = 70;

// Shows one status line of at most `width` characters, its line feeds removed. The next status line
// or message overwrites it.
[[gnu::format(printf, 2, 3)]] void print_status(int width, const char* format, ...);

// Erases the status line and prints a message, all but its last character: the line end that each
// text carries is never printed, so that the next text goes on in the same line. This is meant.
// Returns the count of characters of the whole message; a message of 4,097 or more is not printed,
// and gives 0.
[[gnu::format(printf, 1, 2)]] int prob_message(const char* format, ...);

}  // namespace zanvik
