#include "byte_builder.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cstring>
#include <fstream>
#include <stdexcept>

namespace zanvik::testing {

namespace {

template <typename T>
void append_integer(byte_vector& out, T value) {
  for (std::size_t i = 0; i < sizeof(T); ++i) {
    out.push_back(static_cast<std::byte>((value >> (8 * i)) & 0xff));
  }
}

template <typename T>
void set_integer(byte_vector& bytes, std::size_t offset, T value) {
  if (offset > bytes.size() || sizeof(T) > bytes.size() - offset) {
    throw std::logic_error("poke outside the bytes");
  }
  for (std::size_t i = 0; i < sizeof(T); ++i) {
    bytes[offset + i] = static_cast<std::byte>((value >> (8 * i)) & 0xff);
  }
}

// The next code point of well-formed UTF-8, which is removed from `rest`.
std::uint32_t next_code_point(std::string_view& rest) {
  const auto lead = static_cast<unsigned char>(rest.front());
  const std::size_t length = lead < 0x80 ? 1 : lead < 0xe0 ? 2 : lead < 0xf0 ? 3 : 4;
  if (length > rest.size()) throw std::logic_error("cut UTF-8 in a test");
  std::uint32_t code = length == 1 ? lead : lead & (0x7fu >> length);
  for (std::size_t i = 1; i < length; ++i) {
    code = code << 6 | (static_cast<unsigned char>(rest[i]) & 0x3fu);
  }
  rest.remove_prefix(length);
  return code;
}

std::chrono::sys_seconds utc(int year, int month, int day, int hour, int minute, int second) {
  using namespace std::chrono;
  const year_month_day date{std::chrono::year{year},
                            std::chrono::month{static_cast<unsigned>(month)},
                            std::chrono::day{static_cast<unsigned>(day)}};
  return sys_days{date} + hours{hour} + minutes{minute} + seconds{second};
}

}  // namespace

byte_vector bytes_of(std::initializer_list<int> values) {
  byte_vector out;
  for (const int value : values) out.push_back(static_cast<std::byte>(value));
  return out;
}

byte_vector bytes_of(std::string_view text) {
  byte_vector out;
  for (const char c : text) out.push_back(static_cast<std::byte>(c));
  return out;
}

void append_u8(byte_vector& out, std::uint8_t value) { append_integer(out, value); }
void append_u16(byte_vector& out, std::uint16_t value) { append_integer(out, value); }
void append_u32(byte_vector& out, std::uint32_t value) { append_integer(out, value); }
void append_u64(byte_vector& out, std::uint64_t value) { append_integer(out, value); }

void append_bytes(byte_vector& out, std::span<const std::byte> bytes) {
  out.insert(out.end(), bytes.begin(), bytes.end());
}

void append_zeros(byte_vector& out, std::size_t count) { out.resize(out.size() + count); }

void append_utf16(byte_vector& out, std::string_view utf8) {
  while (!utf8.empty()) {
    std::uint32_t code = next_code_point(utf8);
    if (code >= 0x10000) {
      code -= 0x10000;
      append_u16(out, static_cast<std::uint16_t>(0xd800 + (code >> 10)));
      code = 0xdc00 + (code & 0x3ff);
    }
    append_u16(out, static_cast<std::uint16_t>(code));
  }
}

void append_utf16z(byte_vector& out, std::string_view utf8) {
  append_utf16(out, utf8);
  append_u16(out, 0);
}

std::size_t utf16_units(std::string_view utf8) {
  std::size_t units = 0;
  while (!utf8.empty()) units += next_code_point(utf8) >= 0x10000 ? 2 : 1;
  return units;
}

void set_u8(byte_vector& out, std::size_t at, std::uint8_t value) { set_integer(out, at, value); }
void set_u16(byte_vector& out, std::size_t at, std::uint16_t value) { set_integer(out, at, value); }
void set_u32(byte_vector& out, std::size_t at, std::uint32_t value) { set_integer(out, at, value); }
void set_u64(byte_vector& out, std::size_t at, std::uint64_t value) { set_integer(out, at, value); }

std::uint32_t get_u32(const byte_vector& bytes, std::size_t offset) {
  std::uint32_t value = 0;
  for (std::size_t i = 0; i < 4; ++i) {
    value |= std::to_integer<std::uint32_t>(bytes.at(offset + i)) << (8 * i);
  }
  return value;
}

std::uint32_t crc32(std::span<const std::byte> bytes, std::uint32_t seed) {
  std::uint32_t crc = ~seed;
  for (const std::byte b : bytes) {
    crc ^= std::to_integer<std::uint32_t>(b);
    for (int bit = 0; bit < 8; ++bit) crc = crc >> 1 ^ (0xedb88320u & (0u - (crc & 1u)));
  }
  return ~crc;
}

byte_vector guid_bytes(std::string_view text) {
  std::string digits;
  for (const char c : text) {
    if (c != '-' && c != '{' && c != '}') digits.push_back(c);
  }
  if (digits.size() != 32) throw std::logic_error("not a GUID: " + std::string(text));
  byte_vector bytes;
  for (std::size_t i = 0; i < 32; i += 2) {
    bytes.push_back(static_cast<std::byte>(std::stoul(digits.substr(i, 2), nullptr, 16)));
  }
  std::reverse(bytes.begin(), bytes.begin() + 4);
  std::reverse(bytes.begin() + 4, bytes.begin() + 6);
  std::reverse(bytes.begin() + 6, bytes.begin() + 8);
  return bytes;
}

byte_vector sid_bytes(std::string_view text) {
  std::vector<std::uint64_t> numbers;
  for (std::size_t at = 1; at < text.size() && text[at] == '-';) {
    const std::size_t end = std::min(text.find('-', at + 1), text.size());
    numbers.push_back(std::stoull(std::string(text.substr(at + 1, end - at - 1))));
    at = end;
  }
  if (numbers.size() < 2) throw std::logic_error("not a SID: " + std::string(text));
  byte_vector bytes;
  append_u8(bytes, static_cast<std::uint8_t>(numbers[0]));
  append_u8(bytes, static_cast<std::uint8_t>(numbers.size() - 2));
  for (int shift = 40; shift >= 0; shift -= 8) {  // the authority is the one big-endian number here
    append_u8(bytes, static_cast<std::uint8_t>(numbers[1] >> shift));
  }
  for (std::size_t i = 2; i < numbers.size(); ++i) {
    append_u32(bytes, static_cast<std::uint32_t>(numbers[i]));
  }
  return bytes;
}

std::uint64_t filetime(int year, int month, int day, int hour, int minute, int second,
                       int hundred_ns) {
  const auto since_1601 = utc(year, month, day, hour, minute, second) - utc(1601, 1, 1, 0, 0, 0);
  return static_cast<std::uint64_t>(since_1601.count()) * 10'000'000u +
         static_cast<std::uint64_t>(hundred_ns);
}

std::uint32_t unix_seconds(int year, int month, int day, int hour, int minute, int second) {
  return static_cast<std::uint32_t>(
      utc(year, month, day, hour, minute, second).time_since_epoch().count());
}

void file_bytes::poke_bytes(std::size_t offset, std::span<const std::byte> bytes) {
  for (std::size_t i = 0; i < bytes.size(); ++i) {
    poke_u8(offset + i, std::to_integer<std::uint8_t>(bytes[i]));
  }
}

void file_bytes::write(const std::string& path) const {
  std::ofstream file(path, std::ios::binary | std::ios::trunc);
  file.write(reinterpret_cast<const char*>(bytes_.data()),
             static_cast<std::streamsize>(bytes_.size()));
  file.close();
  if (!file) throw std::runtime_error("cannot write " + path);
}

}  // namespace zanvik::testing
