#include "merge/result_input.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

namespace zanvik {
namespace {

// No event is that long, and what has no line end must not fill the memory.
constexpr std::size_t longest_item = std::size_t{1} << 30;

}  // namespace

result_input::~result_input() {
  if (descriptor_ > STDIN_FILENO) ::close(descriptor_);
}

bool result_input::open(const std::string& path, std::size_t buffer_bytes) {
  descriptor_ = path == "-" ? STDIN_FILENO : ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
  if (descriptor_ < 0) {
    error_ = std::strerror(errno);
    return false;
  }
  buffer_.resize(buffer_bytes);
  return fill();
}

// Reads more behind what is unread; false after an error.
bool result_input::fill() {
  if (at_ != 0) {
    std::memmove(buffer_.data(), buffer_.data() + at_, end_ - at_);
    end_ -= at_;
    at_ = 0;
  }
  if (end_ == buffer_.size()) {
    if (buffer_.size() >= longest_item) {
      error_ = "an item is longer than " + std::to_string(longest_item) + " bytes";
      return false;
    }
    buffer_.resize(2 * buffer_.size());
  }
  while (end_ < buffer_.size()) {
    const ssize_t got = ::read(descriptor_, buffer_.data() + end_, buffer_.size() - end_);
    if (got < 0 && errno == EINTR) continue;
    if (got < 0) error_ = std::strerror(errno);
    if (got <= 0) {
      all_read_ = true;
      return got == 0;
    }
    end_ += static_cast<std::size_t>(got);
  }
  return true;
}

bool result_input::take_item() {
  for (;;) {
    if (at_ == end_ && all_read_) return false;
    const std::size_t bytes =
        at_ == end_ ? std::string_view::npos : form_->item_end(head(), all_read_);
    if (bytes != std::string_view::npos) {
      item_ = head().substr(0, bytes);
      at_ += bytes;
      if (!item_.ends_with('\n')) {
        error_ = "ends in the middle of an event";
        return false;
      }
      return true;
    }
    if (!fill()) return false;
  }
}

bool result_input::take_header(std::string& header) {
  if (!take_item()) return false;
  header = item_;
  return true;
}

bool result_input::next() {
  if (form_ == nullptr || !take_item()) return false;
  ++items_;
  std::uint64_t time = 0;
  if (form_->shown_time(item_, time) && time >= key_.parts[0]) {
    key_.parts[0] = time;
  } else if (out_of_order_ == 0) {
    out_of_order_ = items_;
  }
  return true;
}

}  // namespace zanvik
