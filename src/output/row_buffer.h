// Collects lines and writes them to a stream in large pieces, or keeps them all.
//
// A writer requests room, writes at the pointer it gets, and commits the end. Another `slack` bytes
// after the room may be overwritten, so that short copies can have a fixed size. The buffer grows
// for a request that is larger than itself.
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

  explicit row_buffer(std::ostream& out) : out_(&out) { allocate(default_bytes); }
  // Keeps everything.
  row_buffer() { allocate(default_bytes); }
  ~row_buffer() { flush(); }
  row_buffer(const row_buffer&) = delete;
  row_buffer& operator=(const row_buffer&) = delete;

  // Place for `bytes`, after what was committed; valid until the next call.
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
  // Writes everything committed to the stream, if there is one.
  void flush();

  // Without a stream: everything committed.
  std::string_view text() const {
    return {data_.get(), static_cast<std::size_t>(at_ - data_.get())};
  }
  void clear() { at_ = data_.get(); }
  std::size_t capacity() const { return static_cast<std::size_t>(limit_ - data_.get()); }

 private:
  static constexpr std::size_t default_bytes = std::size_t{256} << 10;  // stays in the L2 cache

  void allocate(std::size_t bytes);
  void make_room(std::size_t bytes);
  void grow(std::size_t bytes);

  std::ostream* out_ = nullptr;
  std::unique_ptr<char[]> data_;
  char* at_ = nullptr;
  char* limit_ = nullptr;  // `slack` bytes before the end
};

}  // namespace zanvik
