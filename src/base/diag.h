// The diagnostic trace of `-diags`: a text file of lines that begin with "->", each flushed at
// once.
#pragma once

#include <cstdint>
#include <fstream>
#include <memory>
#include <string>

namespace zanvik {

struct diag_trace {
  bool diags_on = false;        // the trace is open
  std::int32_t diag_level = 0;  // 2 or 3 with `-l2`, `-l3`
  std::unique_ptr<std::ofstream> diag_stream;
  std::string diag_path;

  // Opens the trace at `path`, truncating it. On failure the trace stays off and the path empty.
  void open(const std::string& path);
};

// Writes one line to the trace; does nothing if it is off. A text that is 255 bytes or more longer
// than its format is cut.
[[gnu::format(printf, 2, 3)]] void diag_line(const diag_trace& trace, const char* format, ...);

}  // namespace zanvik
