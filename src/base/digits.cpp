#include "base/digits.h"

#include <algorithm>
#include <cassert>
#include <cstring>

namespace zanvik {
namespace {

constexpr char hex_digits[] = "0123456789abcdef";

// The bytes at `bytes`, in their order, as two digits each.
char* write_hex_bytes(char* out, std::span<const std::byte> bytes) {
  for (const std::byte b : bytes) {
    const auto value = std::to_integer<unsigned>(b);
    *out++ = hex_digits[value >> 4];
    *out++ = hex_digits[value & 0x0f];
  }
  return out;
}

// The little-endian field at `bytes`.
char* write_hex_field(char* out, std::span<const std::byte> bytes) {
  for (auto b = bytes.rbegin(); b != bytes.rend(); ++b) out = write_hex_bytes(out, {&*b, 1});
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
  const auto end = std::to_chars(digits, digits + sizeof digits, value).ptr;
  return write_filled(out, digits, static_cast<std::size_t>(end - digits), min_width);
}

char* write_hex(char* out, std::uint64_t value, unsigned min_width) {
  char digits[16];
  const auto end = std::to_chars(digits, digits + sizeof digits, value, 16).ptr;
  return write_filled(out, digits, static_cast<std::size_t>(end - digits), min_width);
}

void append_hex(std::string& out, std::uint64_t value, unsigned min_width) {
  char digits[32];
  assert(min_width <= sizeof digits);
  const auto end = write_hex(digits, value, std::min<unsigned>(min_width, sizeof digits));
  out.append(digits, static_cast<std::size_t>(end - digits));
}

char* write_guid(char* out, std::span<const std::byte, 16> bytes) {
  out = write_hex_field(out, bytes.subspan<0, 4>());
  *out++ = '-';
  out = write_hex_field(out, bytes.subspan<4, 2>());
  *out++ = '-';
  out = write_hex_field(out, bytes.subspan<6, 2>());
  *out++ = '-';
  out = write_hex_bytes(out, bytes.subspan<8, 2>());
  *out++ = '-';
  return write_hex_bytes(out, bytes.subspan<10, 6>());
}

void append_guid(std::string& out, std::span<const std::byte, 16> bytes) {
  char text[guid_text_size];
  write_guid(text, bytes);
  out.append(text, sizeof text);
}

}  // namespace zanvik
