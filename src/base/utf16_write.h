// UTF-16LE to UTF-8 in a caller's buffer: the hot path of a listing, where most texts are ASCII.
#pragma once

#include <cstddef>
#include <span>

namespace zanvik {

// What kinds of characters a conversion met; a sum of these. A text beyond ASCII may be said to
// hold any of them.
enum text_kind : unsigned {
  kind_plain = 0,
  kind_control = 1,    // below a blank: tabs and line ends among them
  kind_separator = 2,  // a comma or a vertical bar
};

// Writes the text at `bytes`, up to a NUL unit or the end (an odd last byte is no unit), at `out`,
// which must have room for 3 bytes a unit and 8 more. Returns the end of what was written, and in
// `units` the units consumed, without the NUL; adds the kinds met to `kinds`. Surrogates as
// append_utf8_from_utf16 has them.
char* write_utf8_from_utf16(char* out, std::span<const std::byte> bytes, std::size_t& units,
                            unsigned& kinds);

inline char* write_utf8_from_utf16(char* out, std::span<const std::byte> bytes,
                                   std::size_t& units) {
  unsigned kinds = kind_plain;
  return write_utf8_from_utf16(out, bytes, units, kinds);
}
inline char* write_utf8_from_utf16(char* out, std::span<const std::byte> bytes) {
  std::size_t units;
  return write_utf8_from_utf16(out, bytes, units);
}

// Writes `code_point`, which is at most 0x1fffff, as 1 to 4 bytes at `out`; surrogates take
// their 3. Returns its end.
char* write_utf8(char* out, char32_t code_point);

}  // namespace zanvik
