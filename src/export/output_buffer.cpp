#include "export/output_buffer.h"

#include <poll.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <utility>

namespace zanvik {

output_buffer::output_buffer(int descriptor)
    : descriptor_(descriptor),
      begin_(new char[buffer_bytes]),
      at_(begin_.get()),
      end_(begin_.get() + buffer_bytes) {}

output_buffer::output_buffer(std::string& text) : output_buffer(-1) { text_ = &text; }

output_buffer::output_buffer(piece_sink& pieces) : output_buffer(-1) { pieces_ = &pieces; }

void output_buffer::append(std::string_view text) {
  while (!text.empty()) {
    const std::size_t piece = text.size() < most_room ? text.size() : most_room;
    std::memcpy(room(piece), text.data(), piece);
    at_ += piece;
    text.remove_prefix(piece);
  }
}

void output_buffer::write_through(std::string_view text) {
  (void)flush();
  write_out(text.data(), text.size());
}

bool output_buffer::flush() {
  hand_on(static_cast<std::size_t>(at_ - begin_.get()));
  at_ = begin_.get();
  return error_ == 0;
}

void output_buffer::flush_all_but_one() {
  if (at_ == begin_.get()) return;
  const char last = at_[-1];
  hand_on(static_cast<std::size_t>(at_ - begin_.get()) - 1);
  begin_[0] = last;
  at_ = begin_.get() + 1;
}

// The first `bytes` of the buffer.
void output_buffer::hand_on(std::size_t bytes) {
  if (!pieces_) return write_out(begin_.get(), bytes);
  if (bytes == 0) return;
  begin_ = pieces_->take(std::move(begin_), bytes);
  end_ = begin_.get() + buffer_bytes;
}

void output_buffer::write_out(const char* text, std::size_t bytes) {
  if (text_) {
    text_->append(text, bytes);
    return;
  }
  while (bytes != 0 && error_ == 0) {
    const ssize_t written = ::write(descriptor_, text, bytes);
    if (written >= 0) {
      text += written;
      bytes -= static_cast<std::size_t>(written);
    } else if (errno == EAGAIN) {
      pollfd ready{descriptor_, POLLOUT, 0};
      (void)::poll(&ready, 1, -1);
    } else if (errno != EINTR) {
      error_ = errno;
    }
  }
}

}  // namespace zanvik
