// Copies of texts into rows. Short ones are of one fixed size, past the end of what they are for,
// since that is quicker than looking at the length; both sides need that much slack behind them.
#pragma once

#include <cstddef>
#include <cstring>
#include <string_view>

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

// Copies a text that has no slack behind it. Returns the end of the copy.
inline char* put_text(char* at, std::string_view text) {
  if (!text.empty()) std::memcpy(at, text.data(), text.size());
  return at + text.size();
}

}  // namespace zanvik
