// UTF-16LE to UTF-8 in a caller's buffer: the hot path of a listing, where most texts are ASCII.
#pragma once

#include <cstddef>
#include <span>

namespace zanvik {

// Writes the text at `bytes`, up to a NUL unit or the end (an odd last byte is no unit), at `out`,
// which must have room for 3 bytes a unit and 8 more. Returns the end of what was written, and in
// `units` the units consumed, without the NUL. Surrogates as append_utf8_from_utf16 has them.
char* write_utf8_from_utf16(char* out, std::span<const std::byte> bytes, std::size_t& units);

inline char* write_utf8_from_utf16(char* out, std::span<const std::byte> bytes) {
  std::size_t units;
  return write_utf8_from_utf16(out, bytes, units);
}

}  // namespace zanvik
