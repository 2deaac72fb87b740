// Numbers and GUIDs written out: the fast way of the record path, without locale or stream.
//
// The write_ functions write at `out`, which must have the room each one names, and return where
// they stopped; the append_ functions extend a string. Nothing here can fail.
#pragma once

#include <charconv>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>

namespace zanvik {

// The two digits of `value` modulo 100; 2 bytes.
inline char* write_two_digits(char* out, std::uint32_t value) {
  value %= 100;
  out[0] = static_cast<char>('0' + value / 10);
  out[1] = static_cast<char>('0' + value % 10);
  return out + 2;
}

// Decimal digits, filled with zeros to `min_width` and never cut; at most 20 bytes or `min_width`.
char* write_decimal(char* out, std::uint64_t value, unsigned min_width = 1);

// Lower-case hexadecimal digits without a prefix, filled with zeros to `min_width`; at most 16
// bytes or `min_width`.
char* write_hex(char* out, std::uint64_t value, unsigned min_width = 1);

template <std::integral T>
void append_decimal(std::string& out, T value) {
  char digits[24];
  const auto end = std::to_chars(digits, digits + sizeof digits, value).ptr;
  out.append(digits, static_cast<std::size_t>(end - digits));
}

// As write_hex; `min_width` is at most 32.
void append_hex(std::string& out, std::uint64_t value, unsigned min_width = 1);

// The GUID at `bytes` as "%08x-%04x-%04x-%02x%02x-%02x%02x%02x%02x%02x%02x": three little-endian
// fields, then eight bytes in their order; 36 bytes.
inline constexpr std::size_t guid_text_size = 36;
char* write_guid(char* out, std::span<const std::byte, 16> bytes);
void append_guid(std::string& out, std::span<const std::byte, 16> bytes);

}  // namespace zanvik
