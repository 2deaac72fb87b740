// Messages and the status line, both on standard error.
//
// On a terminal a message clears the status line first and ends in a line end, and a status line
// is never wider than the terminal. Elsewhere there is no status line and no escape sequence, and
// messages share a line. A write that fails is passed over.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace zanvik {

// Erases the status line. Does nothing without a terminal.
void clear_status();

// Characters of a status line at the most.
inline constexpr int status_width_max = 70;

// Shows one status line of at most `width` characters, its line feeds removed; what is too long
// for the terminal is shortened in the middle. The next status line or message overwrites it. Does
// nothing without a terminal.
[[gnu::format(printf, 2, 3)]] void print_status(int width, const char* format, ...);

// Prints a message, all but its last character, which is the line end that each text carries: what
// follows on standard error continues the line, which is meant. A terminal does get the line end,
// and `?` for control characters.
// Returns the count of characters of the whole message; a message of 4,097 or more is not printed,
// and gives 0.
[[gnu::format(printf, 1, 2)]] int prob_message(const char* format, ...);

// Prints `text` in a line of its own, wherever standard error leads.
void print_line(std::string text);

// `text` in at most `width` bytes, "..." in place of its middle when it is longer. UTF-8 sequences
// are left out whole.
std::string shortened_in_middle(std::string_view text, std::size_t width);

// `path` as a message of `beside` other characters shows it: shortened when standard error is a
// terminal that is too narrow for it, else whole.
std::string path_for_message(std::string_view path, std::size_t beside);

}  // namespace zanvik
