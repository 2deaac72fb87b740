// Copies of texts into rows. Short ones have one fixed size, which may be more than needed, because
// that is faster than testing the length; both sides need this much slack after them.
#pragma once

#include <cstddef>
#include <cstring>
#include <string_view>

namespace zanvik {

inline constexpr std::size_t short_copy_bytes = 32;

// Copies `size` bytes, and always at least `short_copy_bytes`. Returns the end of the copy.
inline char* put_bytes(char* at, const char* from, std::size_t size) {
  if (size <= short_copy_bytes) {
    std::memcpy(at, from, short_copy_bytes);
  } else {
    std::memcpy(at, from, size);
  }
  return at + size;
}

// Copies a text without slack after it. Returns the end of the copy.
inline char* put_text(char* at, std::string_view text) {
  if (!text.empty()) std::memcpy(at, text.data(), text.size());
  return at + text.size();
}

}  // namespace zanvik
