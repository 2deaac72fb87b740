// A log that was found: open, and known by its signature; or bytes to be searched for logs.
#pragma once

#include <sys/types.h>

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include "events/event_view.h"

namespace zanvik {

// An open file, closed with the last log that has it.
class open_file {
 public:
  explicit open_file(int descriptor) : descriptor_(descriptor) {}
  open_file(const open_file&) = delete;
  open_file& operator=(const open_file&) = delete;
  ~open_file();
  int descriptor() const { return descriptor_; }

 private:
  int descriptor_;
};

// A log, open at its start. A file stays open as long as a copy of this exists; a stream and a log
// in a disk image can be read only until the callback that brings them ends.
struct found_log {
  log_source source;
  std::shared_ptr<const open_file> file;
  int descriptor = -1;          // of the file, or of the stream
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
