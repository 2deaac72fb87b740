// Messages and the status line, both on standard error.
//
// On a terminal a message first clears the status line and ends with a line end, and a status line
// is never wider than the terminal. Elsewhere there is no status line and no escape sequence, and
// messages share a line. A failed write is ignored.
#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace zanvik {

// Erases the status line. Does nothing without a terminal.
void clear_status();

// Maximum characters of a status line.
inline constexpr int status_width_max = 70;

// Shows one status line of at most `width` characters, without line feeds; a text too long for the
// terminal is shortened in the middle. The next status line or message overwrites it. Does nothing
// without a terminal.
[[gnu::format(printf, 2, 3)]] void print_status(int width, const char* format, ...);

// Prints a message without its last character, which is the line end that each text has: what
// follows on standard error continues the line. This is meant. On a terminal the line end is
// printed, and control characters show as `?`. Returns the number of characters of the whole
// message. A message of 4,097 or more is not printed, and the result is 0.
[[gnu::format(printf, 1, 2)]] int prob_message(const char* format, ...);

// Prints `text` on a line of its own, on a terminal and elsewhere.
void print_line(std::string text);

// Keeps the messages of this thread, for a result that is shown later, in its order. While one
// lives in a thread, the functions above keep what the thread would show. A thread has one at most.
class held_messages {
 public:
  using list = std::vector<std::function<void()>>;

  // They are added to `messages`, which must outlive this.
  explicit held_messages(list& messages);
  held_messages(const held_messages&) = delete;
  held_messages& operator=(const held_messages&) = delete;
  ~held_messages();

  // Keeps `message` for later if messages of this thread are kept, and returns whether they are.
  static bool keep(std::function<void()> message);
  // Shows the messages in order, even if the thread keeps its own, and empties the list.
  static void tell(list& messages);
};

// `text` in at most `width` bytes, with "..." instead of its middle if it is longer. UTF-8
// sequences are not split.
std::string shortened_in_middle(std::string_view text, std::size_t width);

// `path` as shown in a message with `beside` other characters: shortened if standard error is a
// terminal that is too narrow, else whole.
std::string path_for_message(std::string_view path, std::size_t beside);

}  // namespace zanvik
