#include "sigma/encodings.h"

#include <cstdint>

#include "base/fold_case.h"

namespace zanvik::sigma {

std::string base64(std::string_view bytes) {
  constexpr std::string_view digits =
      "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  std::string out;
  for (std::size_t i = 0; i < bytes.size(); i += 3) {
    std::uint32_t group = 0;
    const std::size_t have = bytes.size() - i < 3 ? bytes.size() - i : 3;
    for (std::size_t k = 0; k < 3; ++k) {
      group = group << 8 | (k < have ? static_cast<unsigned char>(bytes[i + k]) : 0U);
    }
    for (std::size_t k = 0; k < 4; ++k) {
      out += k <= have ? digits[group >> (18 - 6 * k) & 0x3f] : '=';
    }
  }
  return out;
}

std::array<std::string, 3> base64_at_offsets(std::string_view bytes) {
  std::array<std::string, 3> out;
  for (std::size_t offset = 0; offset < out.size(); ++offset) {
    const std::string whole = base64(std::string(offset, ' ') + std::string(bytes));
    // Digits that also contain bits of a neighbour are left out: at the front those shared with the
    // bytes before, at the end the last one of an unfinished group.
    const std::size_t first = offset == 0 ? 0 : offset + 1;
    const std::size_t last = (offset + bytes.size()) * 8 / 6;
    if (first < last) out[offset] = whole.substr(first, last - first);
  }
  return out;
}

std::string utf16_bytes(std::string_view text, bool big_endian) {
  std::string out;
  const auto append = [&](char32_t unit) {
    const char high = static_cast<char>(unit >> 8 & 0xff), low = static_cast<char>(unit & 0xff);
    out += big_endian ? high : low;
    out += big_endian ? low : high;
  };
  for (std::size_t position = 0; position < text.size();) {
    const code_point c = next_code_point(text, position);
    const char32_t value = c.valid && c.value <= 0x10ffff ? c.value : 0xfffd;
    if (value < 0x10000) {
      append(value);
    } else {
      append(0xd800 + ((value - 0x10000) >> 10));
      append(0xdc00 + ((value - 0x10000) & 0x3ff));
    }
  }
  return out;
}

}  // namespace zanvik::sigma
