// Collects lines and hands them to a stream in large writes.
//
// A writer asks for room, writes behind the pointer it gets, and commits the end it came to.
// Another `slack` bytes behind the room may be overwritten, so that short copies can be of fixed
// size. The buffer grows for a request that is larger than itself.
#pragma once

#include <cstddef>
#include <cstring>
#include <memory>
#include <ostream>
#include <string_view>

#include "base/tight_buffers.h"

namespace zanvik {

class row_buffer {
 public:
  static constexpr std::size_t slack = 64;

  explicit row_buffer(std::ostream& out) : out_(out) { allocate(default_bytes); }
  ~row_buffer() { flush(); }
  row_buffer(const row_buffer&) = delete;
  row_buffer& operator=(const row_buffer&) = delete;

  // Place for `bytes`, behind what was committed; valid until the next call.
  char* room(std::size_t bytes) {
    if (tight_buffers || bytes > static_cast<std::size_t>(limit_ - at_)) make_room(bytes);
    return at_;
  }
  void commit(char* end) { at_ = end; }

  void append(std::string_view text) {
    char* to = room(text.size());
    if (!text.empty()) std::memcpy(to, text.data(), text.size());
    commit(to + text.size());
  }
  // Hands everything committed to the stream.
  void flush();

 private:
  static constexpr std::size_t default_bytes = std::size_t{256} << 10;  // stays in the L2 cache

  void allocate(std::size_t bytes);
  void make_room(std::size_t bytes);

  std::ostream& out_;
  std::unique_ptr<char[]> data_;
  char* at_ = nullptr;
  char* limit_ = nullptr;  // `slack` bytes before the end
};

}  // namespace zanvik
