// UTF-16LE to UTF-8 in a caller's buffer: the hot path of a listing, where most texts are ASCII.
#pragma once

#include <cstddef>
#include <span>

namespace zanvik {

// The kinds of characters that a conversion met; a sum of these. For a text beyond ASCII it may
// contain kinds that the text does not have.
enum text_kind : unsigned {
  kind_plain = 0,
  kind_control = 1,    // below a blank, including tabs and line ends
  kind_separator = 2,  // a comma or a vertical bar
};

// Writes the text at `bytes`, up to a NUL unit or the end (an odd last byte is not a unit), at
// `out`, which needs room for 3 bytes per unit and 8 more. Returns the end of what was written, and
// in `units` the units consumed, without the NUL; adds the kinds met to `kinds`. Surrogates are
// treated as in append_utf8_from_utf16.
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

// Writes `code_point`, which is at most 0x1fffff, as 1 to 4 bytes at `out`; surrogates need 3.
// Returns its end.
char* write_utf8(char* out, char32_t code_point);

}  // namespace zanvik
