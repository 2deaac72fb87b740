// Numbers and GUIDs as text: the fast way for the path of each record, without locale or stream.
//
// The write_ functions write at `out`, which needs the room that each one names, and return the
// end; the append_ functions extend a string. Nothing here can fail.
#pragma once

#include <array>
#include <charconv>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>
#include <string>

namespace zanvik {

// The two decimal digits of each number below 100.
inline constexpr auto decimal_pairs = [] {
  std::array<std::array<char, 2>, 100> pairs{};
  for (std::size_t value = 0; value < pairs.size(); ++value) {
    pairs[value] = {static_cast<char>('0' + value / 10), static_cast<char>('0' + value % 10)};
  }
  return pairs;
}();

// The two digits of `value`, which is below 100; 2 bytes.
inline char* write_decimal_pair(char* out, std::uint32_t value) {
  std::memcpy(out, decimal_pairs[value].data(), 2);
  return out + 2;
}

// The two digits of `value` modulo 100; 2 bytes.
inline char* write_two_digits(char* out, std::uint32_t value) {
  return write_decimal_pair(out, value % 100);
}

// Decimal digits, padded with zeros to `min_width`, never cut; at most 20 bytes or `min_width`.
char* write_decimal(char* out, std::uint64_t value, unsigned min_width = 1);

// Lower-case hexadecimal digits without a prefix, padded with zeros to `min_width`; at most 16
// bytes or `min_width`.
char* write_hex(char* out, std::uint64_t value, unsigned min_width = 1);

// The two lower-case hexadecimal digits of each byte.
inline constexpr auto hex_pairs = [] {
  constexpr char digits[] = "0123456789abcdef";
  std::array<std::array<char, 2>, 256> pairs{};
  for (std::size_t byte = 0; byte < pairs.size(); ++byte) {
    pairs[byte] = {digits[byte >> 4], digits[byte & 0x0f]};
  }
  return pairs;
}();

// The two hexadecimal digits of `byte`; 2 bytes.
inline char* write_hex_pair(char* out, std::uint8_t byte) {
  std::memcpy(out, hex_pairs[byte].data(), 2);
  return out + 2;
}

// All hexadecimal digits of `value`; two for each of its bytes.
template <std::unsigned_integral T>
char* write_all_hex(char* out, T value) {
  for (std::size_t shift = 8 * sizeof(T); shift != 0; shift -= 8) {
    out = write_hex_pair(out, static_cast<std::uint8_t>(value >> (shift - 8)));
  }
  return out;
}

template <std::integral T>
void append_decimal(std::string& out, T value) {
  char digits[24];
  const auto end = std::to_chars(digits, digits + sizeof digits, value).ptr;
  out.append(digits, static_cast<std::size_t>(end - digits));
}

// As write_hex; `min_width` is at most 32.
void append_hex(std::string& out, std::uint64_t value, unsigned min_width = 1);

// The GUID at `bytes` as "%08x-%04x-%04x-%02x%02x-%02x%02x%02x%02x%02x%02x": three little-endian
// fields, then eight bytes in order; 36 bytes.
inline constexpr std::size_t guid_text_size = 36;
char* write_guid(char* out, std::span<const std::byte, 16> bytes);
void append_guid(std::string& out, std::span<const std::byte, 16> bytes);

}  // namespace zanvik
