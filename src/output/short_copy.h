// Copies of short texts into rows: of one fixed size, past the end of what they are for, since that
// is quicker than looking at the length. Both sides need that much slack behind them.
#pragma once

#include <cstddef>
#include <cstring>

namespace zanvik {

inline constexpr std::size_t short_copy_bytes = 32;

// Copies `size` bytes, and up to `short_copy_bytes` in any case. Returns the end of the copy.
inline char* put_bytes(char* at, const char* from, std::size_t size) {
  if (size <= short_copy_bytes) {
    std::memcpy(at, from, short_copy_bytes);
  } else {
    std::memcpy(at, from, size);
  }
  return at + size;
}

}  // namespace zanvik
