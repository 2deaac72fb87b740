#include "base/fileio_output.h"

#include <poll.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

namespace zanvik::uni {

fileio_streambuf::fileio_streambuf(int descriptor, std::size_t buffer_bytes)
    : descriptor_(descriptor),
      is_terminal_(::isatty(descriptor) != 0),
      buffer_bytes_(buffer_bytes),
      buffer_(std::make_unique_for_overwrite<char[]>(buffer_bytes)) {
  setp(buffer_.get(), buffer_.get() + buffer_bytes_);
}

fileio_streambuf::~fileio_streambuf() { flush_pending(); }

bool fileio_streambuf::write_out(const char* bytes, std::size_t count) {
  while (count > 0 && error_ == 0) {
    const ssize_t written = ::write(descriptor_, bytes, count);
    if (written >= 0) {
      bytes += written;
      count -= static_cast<std::size_t>(written);
    } else if (errno == EAGAIN) {  // a terminal or pipe in non-blocking mode: wait for room
      pollfd room = {descriptor_, POLLOUT, 0};
      ::poll(&room, 1, -1);
    } else if (errno != EINTR) {
      error_ = errno;
    }
  }
  return error_ == 0;
}

bool fileio_streambuf::is_lost() const {
  if (error_ != 0) return true;
  pollfd other_end = {descriptor_, 0, 0};
  return ::poll(&other_end, 1, 0) > 0 && (other_end.revents & (POLLERR | POLLHUP)) != 0;
}

bool fileio_streambuf::flush_pending() {
  const bool written = write_out(pbase(), static_cast<std::size_t>(pptr() - pbase()));
  setp(buffer_.get(), buffer_.get() + buffer_bytes_);  // what could not be written is dropped
  return written;
}

fileio_streambuf::int_type fileio_streambuf::overflow(int_type c) {
  if (!flush_pending()) return traits_type::eof();
  if (traits_type::eq_int_type(c, traits_type::eof())) return traits_type::not_eof(c);
  *pptr() = traits_type::to_char_type(c);
  pbump(1);
  return c;
}

std::streamsize fileio_streambuf::xsputn(const char* text, std::streamsize count) {
  if (count <= 0) return 0;
  const auto length = static_cast<std::size_t>(count);
  const bool direct = length >= buffer_bytes_ / 2;  // a direct write is faster than a copy
  if (error_ != 0 || ((direct || count > epptr() - pptr()) && !flush_pending())) return 0;
  if (direct) return write_out(text, length) ? count : 0;
  std::memcpy(pptr(), text, length);
  pbump(static_cast<int>(count));
  return count;
}

int fileio_streambuf::sync() { return flush_pending() ? 0 : -1; }

}  // namespace zanvik::uni
