// Lines from standard input, as they arrive.
//
// In go the bytes of a descriptor; out come lines of at most 4,095 bytes, a longer one as several.
// A NUL ends the text of its line: what stands behind it, up to the line end, is lost. A
// descriptor that cannot be read has ended.
#pragma once

#include <unistd.h>

#include <array>
#include <cstddef>
#include <span>
#include <string>

namespace zanvik::uni {

class stdin_stream {
 public:
  // `descriptor` stays the caller's.
  explicit stdin_stream(int descriptor = STDIN_FILENO) : descriptor_(descriptor) {}
  stdin_stream(const stdin_stream&) = delete;
  stdin_stream& operator=(const stdin_stream&) = delete;
  virtual ~stdin_stream() = default;

  // Sets `out` to the next line; `strip` takes the CRs and LFs off its end. Returns false, with
  // `out` unchanged, at the end of the input. A line of exactly 4,095 bytes comes whole, and its
  // line end then comes as a line of its own.
  [[nodiscard]] virtual bool read_line(std::string& out, bool strip);

 private:
  // Adds what can be had behind the bytes that are held; false when nothing came.
  bool fill();
  std::span<const char> held() const { return std::span(buffer_).subspan(begin_, end_ - begin_); }

  int descriptor_;
  std::array<char, 4096> buffer_;
  std::size_t begin_ = 0;  // of the bytes not yet given out
  std::size_t end_ = 0;
};

}  // namespace zanvik::uni
