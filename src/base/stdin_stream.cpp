#include "base/stdin_stream.h"

#include <poll.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <string_view>

#include "base/text.h"

namespace zanvik::uni {
namespace {

constexpr std::size_t longest_piece = 4095;

}  // namespace

bool stdin_stream::fill() {
  std::memmove(buffer_.data(), buffer_.data() + begin_, end_ - begin_);
  end_ -= begin_;
  begin_ = 0;
  for (;;) {
    const ssize_t got = ::read(descriptor_, buffer_.data() + end_, buffer_.size() - end_);
    if (got > 0) {
      end_ += static_cast<std::size_t>(got);
      return true;
    }
    if (got == 0) return false;
    if (errno == EINTR) continue;
    if (errno != EAGAIN) return false;
    // The descriptor is in non-blocking mode; the names are still to come.
    struct pollfd waiting = {descriptor_, POLLIN, 0};
    if (::poll(&waiting, 1, -1) == -1 && errno != EINTR) return false;
  }
}

bool stdin_stream::read_line(std::string& out, bool strip) {
  std::size_t length = 0;
  for (std::size_t searched = 0; length == 0;) {
    const auto bytes = held();
    const auto found =
        std::find(bytes.begin() + static_cast<std::ptrdiff_t>(searched), bytes.end(), '\n');
    if (found != bytes.end()) {
      length = static_cast<std::size_t>(found - bytes.begin()) + 1;
    } else if (bytes.size() >= longest_piece) {
      length = longest_piece;
    } else if (searched = bytes.size(); !fill()) {
      if (bytes.empty()) return false;
      length = bytes.size();
    }
  }
  length = std::min(length, longest_piece);
  const std::string_view piece(buffer_.data() + begin_, length);
  begin_ += length;
  out = piece.substr(0, piece.find('\0'));
  if (strip) strip_line_ends(out);
  return true;
}

}  // namespace zanvik::uni
