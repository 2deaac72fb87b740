// The packed values of one kept record.
//
// A block is a row of cells. A cell is a head, an LEB128 number with the length in bytes times 2
// plus 1 if the text is `marked`, and then the text. An unmarked text contains no comma, no
// vertical bar, no carriage return and no line feed, so a writer may copy it unchanged. Blocks are
// in a record_arena, so a copy may run past a cell's end.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

namespace zanvik {

struct value_cell {
  std::string_view text;
  bool marked = false;
};

// Whether a text needs a mark.
inline bool needs_mark(std::string_view text) {
  return text.find_first_of(",|\r\n") != std::string_view::npos;
}

// Walks the cells of a block. The caller knows their number (`record_shape::value_count`).
class cell_reader {
 public:
  explicit cell_reader(const char* block) : at_(block) {}

  value_cell next() {
    std::uint64_t head = 0;
    unsigned shift = 0;
    std::uint8_t byte;
    do {
      byte = static_cast<std::uint8_t>(*at_++);
      head |= std::uint64_t{byte & 0x7fu} << shift;
      shift += 7;
    } while (byte & 0x80u);
    const std::size_t length = head >> 1;
    const value_cell cell{{at_, length}, (head & 1) != 0};
    at_ += length;
    return cell;
  }

 private:
  const char* at_;
};

// Maximum size of a cell's head, in bytes.
inline constexpr std::size_t max_cell_head = 10;

// Writes a cell's head to `out`, which has room for `max_cell_head` bytes; returns its end.
inline char* write_cell_head(char* out, std::size_t length, bool marked) {
  std::uint64_t head = (std::uint64_t{length} << 1) | (marked ? 1u : 0u);
  while (head >= 0x80) {
    *out++ = static_cast<char>(head | 0x80);
    head >>= 7;
  }
  *out++ = static_cast<char>(head);
  return out;
}

// Puts the head before a cell's text, which was written to `cell + 1` and ends at `end`; the text
// moves if its head is longer than the usual one byte. Returns the cell's end.
inline char* finish_cell(char* cell, char* end, bool marked) {
  char* const text = cell + 1;
  const auto length = static_cast<std::size_t>(end - text);
  constexpr std::size_t one_byte_lengths = 64;
  if (length < one_byte_lengths) {
    *cell = static_cast<char>(length << 1 | (marked ? 1u : 0u));
    return end;
  }
  char head[max_cell_head];
  const auto head_length = static_cast<std::size_t>(write_cell_head(head, length, marked) - head);
  std::memmove(cell + head_length, text, length);
  std::memcpy(cell, head, head_length);
  return cell + head_length + length;
}

}  // namespace zanvik
