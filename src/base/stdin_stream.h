// Lines from standard input, as they arrive.
//
// In: the bytes of a descriptor. Out: lines of at most 4,095 bytes; a longer one is split. A NUL
// ends the text of its line: what follows it, up to the line end, is lost. A descriptor that cannot
// be read counts as ended.
#pragma once

#include <unistd.h>

#include <array>
#include <cstddef>
#include <span>
#include <string>

namespace zanvik::uni {

class stdin_stream {
 public:
  // The caller keeps `descriptor`.
  explicit stdin_stream(int descriptor = STDIN_FILENO) : descriptor_(descriptor) {}
  stdin_stream(const stdin_stream&) = delete;
  stdin_stream& operator=(const stdin_stream&) = delete;
  virtual ~stdin_stream() = default;

  // Sets `out` to the next line; `strip` removes the CRs and LFs at its end. Returns false, with
  // `out` unchanged, at the end of the input. A line of exactly 4,095 bytes is returned whole, and
  // its line end is then returned as a separate line.
  [[nodiscard]] virtual bool read_line(std::string& out, bool strip);

 private:
  // Reads more bytes after those in the buffer; false if there are none.
  bool fill();
  std::span<const char> held() const { return std::span(buffer_).subspan(begin_, end_ - begin_); }

  int descriptor_;
  std::array<char, 4096> buffer_;
  std::size_t begin_ = 0;  // of the bytes not yet returned
  std::size_t end_ = 0;
};

}  // namespace zanvik::uni
