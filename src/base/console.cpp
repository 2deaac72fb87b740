#include "base/console.h"

#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <string>

namespace zanvik {
namespace {

constexpr int max_message_length = 4096;

void put_error_text(const std::string& text) {
  std::fwrite(text.data(), 1, text.size(), stderr);
  std::fflush(stderr);
}

}  // namespace

void clear_status() { put_error_text("\x1b[2K\r                           \r"); }

void print_status(int width, const char* format, ...) {
  char formatted[256];
  std::va_list arguments;
  va_start(arguments, format);
  const int length = std::vsnprintf(formatted, sizeof(formatted), format, arguments);
  va_end(arguments);
  if (length < 0) return;
  const int shown = std::clamp(std::min(width, length), 0, status_width_max);
  std::string text(formatted, static_cast<std::size_t>(shown));
  std::erase(text, '\n');
  put_error_text("\x1b[2K\r    \r" + text + "\r");
}

int prob_message(const char* format, ...) {
  clear_status();
  if (format == nullptr) return 0;
  std::va_list arguments;
  va_start(arguments, format);
  std::va_list measured;
  va_copy(measured, arguments);
  const int length = std::vsnprintf(nullptr, 0, format, measured);
  va_end(measured);
  if (length < 0 || length > max_message_length) {
    va_end(arguments);
    return 0;
  }
  std::string text(static_cast<std::size_t>(length) + 1, '\0');
  std::vsnprintf(text.data(), text.size(), format, arguments);
  va_end(arguments);
  // Neither the terminator nor, on purpose, the last character: messages share a line.
  text.resize(static_cast<std::size_t>(std::max(length - 1, 0)));
  put_error_text(text);
  return length;
}

}  // namespace zanvik
