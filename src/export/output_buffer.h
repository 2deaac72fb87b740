// Bytes on their way to a file descriptor, through one large buffer and write(2).
//
// Or into pieces of memory that somebody else writes later.
//
// A form requests room, writes into it and commits the end. The last byte written is always kept,
// so that a form may remove it. After an error nothing more is written; the errno is kept. The
// descriptor belongs to the caller and has to outlive the buffer.
#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>

namespace zanvik {

// Takes the bytes of an output_buffer, piece by piece.
class piece_sink {
 public:
  virtual ~piece_sink() = default;
  // Takes the first `bytes` of a piece, and returns a piece to go on with.
  virtual std::unique_ptr<char[]> take(std::unique_ptr<char[]> piece, std::size_t bytes) = 0;
};

class output_buffer {
 public:
  static constexpr std::size_t buffer_bytes = 1 << 20;  // of a piece

  explicit output_buffer(int descriptor);
  // Appends to `text` instead.
  explicit output_buffer(std::string& text);
  // Hands its bytes to `pieces` instead, which must outlive it.
  explicit output_buffer(piece_sink& pieces);
  output_buffer(const output_buffer&) = delete;
  output_buffer& operator=(const output_buffer&) = delete;

  // Maximum room that may be requested at once.
  static constexpr std::size_t most_room = 512 << 10;

  // Where at least `bytes` may be written; `commit` says how far they were.
  char* room(std::size_t bytes) {
    if (static_cast<std::size_t>(end_ - at_) < bytes) flush_all_but_one();
    return at_;
  }
  void commit(char* end) { at_ = end; }
  // For writers that keep the position themselves, from one `commit` to the next: where to write,
  // and where the room ends.
  char* position() const { return at_; }
  char* limit() const { return end_; }
  void append(std::string_view text);
  // Writes what waits, then `text`, without a copy of it. Nothing of it can be removed later.
  void write_through(std::string_view text);
  // Removes the last byte if it is `last`.
  void take_back(char last) {
    if (at_ != begin_.get() && at_[-1] == last) --at_;
  }

  // Text that `write` makes in a buffer of its own, valid until the next call.
  template <typename F>
  const std::string& render(F&& write) {
    if (!aside_) aside_ = std::make_unique<output_buffer>(aside_text_);
    aside_text_.clear();
    write(*aside_);
    (void)aside_->flush();
    return aside_text_;
  }

  // Writes everything. False if that, or an earlier write, failed.
  bool flush();
  bool failed() const { return error_ != 0; }
  int error() const { return error_; }

 private:
  void flush_all_but_one();
  void write_out(const char* text, std::size_t bytes);

  void hand_on(std::size_t bytes);

  int descriptor_ = -1;
  std::string* text_ = nullptr;
  piece_sink* pieces_ = nullptr;
  int error_ = 0;
  std::unique_ptr<char[]> begin_;
  char* at_;
  char* end_;
  std::string aside_text_;
  std::unique_ptr<output_buffer> aside_;
};

}  // namespace zanvik
