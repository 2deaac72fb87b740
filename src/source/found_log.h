// A log that was found: open, and known by its signature; or bytes to be searched for logs.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "events/event_view.h"

namespace zanvik {

// A log, open at its start. The descriptor is closed when the log is done.
struct found_log {
  log_source source;
  int descriptor = -1;
  std::uint64_t size = 0;       // bytes; 0 for a stream
  std::vector<std::byte> head;  // first bytes of a stream, which cannot be read again
  bool is_stream = false;
  bool carve = false;  // taken for bytes in which logs may be, whatever they begin with
};

}  // namespace zanvik
