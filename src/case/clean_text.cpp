#include "case/clean_text.h"

#include <cstdint>

namespace zanvik {
namespace {

constexpr std::string_view replacement = "\xef\xbf\xbd";  // U+FFFD

// Bytes of the character at the start of `text`; 0 when it is none, or a NUL.
std::size_t character_bytes(std::string_view text) {
  const auto first = static_cast<unsigned char>(text.front());
  if (first < 0x80) return first == 0 ? 0 : 1;
  const std::size_t bytes = first >= 0xf0 ? 4 : first >= 0xe0 ? 3 : 2;
  if (first < 0xc2 || first > 0xf4 || text.size() < bytes) return 0;
  std::uint32_t code = first & (0x7fu >> bytes);
  for (std::size_t i = 1; i < bytes; ++i) {
    const auto next = static_cast<unsigned char>(text[i]);
    if ((next & 0xc0) != 0x80) return 0;
    code = code << 6 | (next & 0x3fu);
  }
  const bool overlong = bytes == 3 ? code < 0x800 : bytes == 4 && code < 0x10000;
  const bool surrogate = code >= 0xd800 && code <= 0xdfff;
  return overlong || surrogate || code > 0x10ffff ? 0 : bytes;
}

}  // namespace

bool is_clean_text(std::string_view text) {
  while (!text.empty()) {
    const std::size_t bytes = character_bytes(text);
    if (bytes == 0) return false;
    text.remove_prefix(bytes);
  }
  return true;
}

std::string_view clean_text(std::string_view text, std::string& scratch) {
  if (is_clean_text(text)) return text;
  scratch.clear();
  while (!text.empty()) {
    const std::size_t bytes = character_bytes(text);
    scratch.append(bytes == 0 ? replacement : text.substr(0, bytes));
    text.remove_prefix(bytes == 0 ? 1 : bytes);
  }
  return scratch;
}

}  // namespace zanvik
