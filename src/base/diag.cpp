#include "base/diag.h"

#include <cstdarg>
#include <cstdio>
#include <cstring>

namespace zanvik {

void diag_trace::open(const std::string& path) {
  diag_stream = std::make_unique<std::ofstream>(path, std::ios::out | std::ios::trunc);
  diags_on = diag_stream->is_open();
  diag_path = diags_on ? path : std::string();
  if (!diags_on) diag_stream.reset();
}

void diag_line(const diag_trace& trace, const char* format, ...) {
  if (!trace.diags_on || !trace.diag_stream) return;
  // The buffer is sized by the format, not by the text: a long path is cut, and traces stay short.
  std::string text(std::strlen(format) + 255, '\0');
  std::va_list arguments;
  va_start(arguments, format);
  const int length = std::vsnprintf(text.data(), text.size(), format, arguments);
  va_end(arguments);
  if (length < 0) return;
  text.resize(std::strlen(text.c_str()));
  *trace.diag_stream << "->" << text << '\n' << std::flush;
}

}  // namespace zanvik
