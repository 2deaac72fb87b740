// Bytes on their way to a file descriptor, through one large buffer and write(2).
//
// A form asks for room, writes into it and says where it stopped. The last byte written always
// stays at hand, so that a form may take it back. After an error nothing more is written; the
// errno stays. The descriptor belongs to the caller and has to outlive the buffer.
#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>

namespace zanvik {

class output_buffer {
 public:
  explicit output_buffer(int descriptor);
  // Appends to `text` instead.
  explicit output_buffer(std::string& text);
  output_buffer(const output_buffer&) = delete;
  output_buffer& operator=(const output_buffer&) = delete;

  // The most that may be asked for at once.
  static constexpr std::size_t most_room = 512 << 10;

  // Where at least `bytes` may be written; `commit` says up to where they were.
  char* room(std::size_t bytes) {
    if (static_cast<std::size_t>(end_ - at_) < bytes) flush_all_but_one();
    return at_;
  }
  void commit(char* end) { at_ = end; }
  // For writers that hold the position themselves, from one `commit` to the next: where to
  // write, and where the room ends.
  char* position() const { return at_; }
  char* limit() const { return end_; }
  void append(std::string_view text);
  // Takes back the last byte if it is `last`.
  void take_back(char last) {
    if (at_ != begin_.get() && at_[-1] == last) --at_;
  }

  // Writes all there is. False when that, or a write before it, failed.
  bool flush();
  bool failed() const { return error_ != 0; }
  int error() const { return error_; }

 private:
  void flush_all_but_one();
  void write_out(const char* text, std::size_t bytes);

  static constexpr std::size_t buffer_bytes = 1 << 20;

  int descriptor_ = -1;
  std::string* text_ = nullptr;
  int error_ = 0;
  std::unique_ptr<char[]> begin_;
  char* at_;
  char* end_;
};

}  // namespace zanvik
