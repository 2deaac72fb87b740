#include "base/digits.h"

#include <algorithm>
#include <bit>
#include <cassert>
#include <cstring>

namespace zanvik {
namespace {

// The bytes at `bytes`, in order.
template <std::size_t count>
char* write_hex_bytes(char* out, const std::byte* bytes) {
  for (std::size_t i = 0; i < count; ++i)
    out = write_hex_pair(out, std::to_integer<std::uint8_t>(bytes[i]));
  return out;
}

// The little-endian field at `bytes`.
template <std::size_t count>
char* write_hex_field(char* out, const std::byte* bytes) {
  for (std::size_t i = count; i-- != 0;)
    out = write_hex_pair(out, std::to_integer<std::uint8_t>(bytes[i]));
  return out;
}

char* write_filled(char* out, const char* digits, std::size_t count, unsigned min_width) {
  if (count < min_width) {
    std::memset(out, '0', min_width - count);
    out += min_width - count;
  }
  std::memcpy(out, digits, count);
  return out + count;
}

}  // namespace

char* write_decimal(char* out, std::uint64_t value, unsigned min_width) {
  char digits[20];
  if (min_width <= 1) return std::to_chars(out, out + sizeof digits, value).ptr;
  const auto end = std::to_chars(digits, digits + sizeof digits, value).ptr;
  return write_filled(out, digits, static_cast<std::size_t>(end - digits), min_width);
}

char* write_hex(char* out, std::uint64_t value, unsigned min_width) {
  constexpr unsigned most_digits = 16;
  char digits[most_digits];
  for (unsigned i = 0; i < most_digits; i += 2) {
    write_hex_pair(digits + i, static_cast<std::uint8_t>(value >> (4 * (most_digits - 2 - i))));
  }
  const unsigned needed = (static_cast<unsigned>(std::bit_width(value | 1)) + 3) / 4;
  return write_filled(out, digits + (most_digits - needed), needed, min_width);
}

void append_hex(std::string& out, std::uint64_t value, unsigned min_width) {
  char digits[32];
  assert(min_width <= sizeof digits);
  const auto end = write_hex(digits, value, std::min<unsigned>(min_width, sizeof digits));
  out.append(digits, static_cast<std::size_t>(end - digits));
}

char* write_guid(char* out, std::span<const std::byte, 16> bytes) {
  const std::byte* const in = bytes.data();
  out = write_hex_field<4>(out, in);
  *out++ = '-';
  out = write_hex_field<2>(out, in + 4);
  *out++ = '-';
  out = write_hex_field<2>(out, in + 6);
  *out++ = '-';
  out = write_hex_bytes<2>(out, in + 8);
  *out++ = '-';
  return write_hex_bytes<6>(out, in + 10);
}

void append_guid(std::string& out, std::span<const std::byte, 16> bytes) {
  char text[guid_text_size];
  write_guid(text, bytes);
  out.append(text, sizeof text);
}

}  // namespace zanvik
