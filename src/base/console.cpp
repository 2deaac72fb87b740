#include "base/console.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <utility>

namespace zanvik {
namespace {

constexpr int max_message_length = 4096;

// Columns of the terminal on standard error, 0 if it is not one.
std::size_t terminal_columns() {
  if (::isatty(STDERR_FILENO) == 0) return 0;
  constexpr std::size_t assumed = 80;  // if the terminal does not say
  struct winsize size = {};
  if (::ioctl(STDERR_FILENO, TIOCGWINSZ, &size) != 0 || size.ws_col == 0) return assumed;
  return size.ws_col;
}

// The last output was a message without a line end. Never true on a terminal.
bool line_is_open = false;

void put_error_text(const std::string& text) {
  std::fwrite(text.data(), 1, text.size(), stderr);
  std::fflush(stderr);
}

// A file name may contain control sequences for a terminal.
void replace_controls(std::string& text) {
  std::replace_if(
      text.begin(), text.end(),
      [](char c) { return static_cast<unsigned char>(c) < ' ' || c == '\x7f'; }, '?');
}

// Where the messages of this thread are kept; null if they are shown at once.
thread_local held_messages::list* held = nullptr;

void put_status(int width, std::string text) {
  const std::size_t columns = terminal_columns();
  if (columns == 0) return;
  text.resize(std::min(text.size(), static_cast<std::size_t>(
                                        std::clamp(width, 0, status_width_max))));
  std::erase(text, '\n');
  replace_controls(text);
  // A text that fills its line would move the cursor to the next one.
  put_error_text("\x1b[2K\r    \r" + shortened_in_middle(text, columns - 1) + "\r");
}

// Shows a message, which ends without a line end.
void put_message(std::string text) {
  clear_status();
  if (terminal_columns() != 0) {
    replace_controls(text);
    text += '\n';
  } else {
    line_is_open = line_is_open || !text.empty();
  }
  put_error_text(text);
}

bool is_continuation(char c) { return (static_cast<unsigned char>(c) & 0xc0) == 0x80; }

}  // namespace

std::string shortened_in_middle(std::string_view text, std::size_t width) {
  constexpr std::string_view gap = "...";
  if (text.size() <= width) return std::string(text);
  if (width <= gap.size()) return std::string(gap.substr(0, width));
  // The end of a path says more than its start.
  std::size_t front = (width - gap.size()) / 2;
  std::size_t back = text.size() - (width - gap.size() - front);
  while (front > 0 && is_continuation(text[front])) --front;
  while (back < text.size() && is_continuation(text[back])) ++back;
  return std::string(text.substr(0, front)).append(gap).append(text.substr(back));
}

std::string path_for_message(std::string_view path, std::size_t beside) {
  const std::size_t columns = terminal_columns();
  if (columns == 0) return std::string(path);
  constexpr std::size_t least = 16;  // on any terminal, so that something is left to see
  return shortened_in_middle(path, columns > beside + least ? columns - beside : least);
}

void clear_status() {
  if (!held && terminal_columns() != 0) put_error_text("\x1b[2K\r                           \r");
}

void print_status(int width, const char* format, ...) {
  if (terminal_columns() == 0) return;
  char formatted[256];
  std::va_list arguments;
  va_start(arguments, format);
  const int length = std::vsnprintf(formatted, sizeof(formatted), format, arguments);
  va_end(arguments);
  if (length < 0) return;
  if (!held_messages::keep([width, text = std::string(formatted)] { put_status(width, text); })) {
    put_status(width, formatted);
  }
}

int prob_message(const char* format, ...) {
  if (format == nullptr) {
    clear_status();
    return 0;
  }
  std::va_list arguments;
  va_start(arguments, format);
  std::va_list measured;
  va_copy(measured, arguments);
  const int length = std::vsnprintf(nullptr, 0, format, measured);
  va_end(measured);
  if (length < 0 || length > max_message_length) {
    va_end(arguments);
    clear_status();
    return 0;
  }
  std::string text(static_cast<std::size_t>(length) + 1, '\0');
  std::vsnprintf(text.data(), text.size(), format, arguments);
  va_end(arguments);
  // Without the terminator and, on purpose, without the last character.
  text.resize(static_cast<std::size_t>(std::max(length - 1, 0)));
  if (!held_messages::keep([text] { put_message(text); })) put_message(std::move(text));
  return length;
}

void print_line(std::string text) {
  if (held_messages::keep([text] { print_line(text); })) return;
  clear_status();
  if (terminal_columns() != 0) replace_controls(text);
  if (std::exchange(line_is_open, false)) text.insert(0, 1, '\n');
  put_error_text(text + '\n');
}

held_messages::held_messages(list& messages) { held = &messages; }

held_messages::~held_messages() { held = nullptr; }

bool held_messages::keep(std::function<void()> message) {
  if (held) held->push_back(std::move(message));
  return held != nullptr;
}

void held_messages::tell(list& messages) {
  list* const kept = std::exchange(held, nullptr);
  for (const std::function<void()>& message : messages) message();
  held = kept;
  messages.clear();
}

}  // namespace zanvik
