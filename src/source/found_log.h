// A log that was found: open, and known by its signature; or bytes to be searched for logs.
#pragma once

#include <sys/types.h>

#include <cstddef>
#include <cstdint>
#include <functional>
#include <span>
#include <string>
#include <utility>
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

  // Of a log in a disk image, in place of the descriptor: reads like pread.
  std::function<ssize_t(std::span<std::byte> buffer, std::uint64_t offset)> read_at;
  std::string image;          // the path of the image
  std::int64_t modified = 0;  // its last modification, in seconds since 1970; 0 when not known
  // Offset and size of the parts that are meant, where not all bytes are.
  std::vector<std::pair<std::uint64_t, std::uint64_t>> parts;
};

}  // namespace zanvik
