// Typed values: from the bytes of a slot to the text that selection compares and output prints.
//
// Rendering cannot fail: a type that is not rendered, and a value whose bytes do not exist, give
// the empty text. Texts are written to a caller's buffer of `value_text_bound` bytes, because this
// is the hot path of the program; the appending forms are for all other code.
#pragma once

#include <array>
#include <charconv>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>
#include <string>
#include <string_view>

#include "base/byte_cursor.h"
#include "base/digits.h"
#include "base/time_writer.h"
#include "base/utf16_write.h"

namespace zanvik {

// Type codes of a slot's descriptor that have a meaning here.
namespace value_type {
enum code : std::uint16_t {
  null = 0,
  utf16 = 1,
  ansi = 2,
  int8 = 3,
  uint8 = 4,
  int16 = 5,
  uint16 = 6,
  int32 = 7,
  uint32 = 8,
  int64 = 9,
  uint64 = 10,
  float32 = 11,
  float64 = 12,
  boolean = 13,
  binary = 14,
  guid = 15,
  size_t_ = 16,
  filetime = 17,
  system_time = 18,
  sid = 19,
  hex32 = 20,
  hex64 = 21,
  handle = 32,
  bxml = 33,
  xml = 35,
  multi_utf16 = 129,
};
}  // namespace value_type

// The types whose text may contain anything; the texts of all others consist of digits, letters and
// punctuation that needs no care.
inline bool is_free_text(std::uint16_t type) {
  return type == value_type::utf16 || type == value_type::xml || type == value_type::ansi ||
         type == value_type::multi_utf16 || type == value_type::binary;
}

// What the text of a value is made from.
enum class value_source : std::uint8_t {
  none,      // the type has no text
  fixed,     // a few bytes, whatever its size says
  sized,     // as many bytes as its size says
  to_nul,    // the bytes up to a NUL, whatever its size says
  composed,  // binary XML: a separate stream
};

// By type code.
inline constexpr auto value_sources = [] {
  std::array<value_source, 256> sources{};
  for (std::size_t type = value_type::null; type <= value_type::hex64; ++type) {
    sources[type] = value_source::fixed;
  }
  sources[value_type::handle] = value_source::fixed;
  for (const auto type :
       {value_type::utf16, value_type::xml, value_type::binary, value_type::multi_utf16}) {
    sources[type] = value_source::sized;
  }
  sources[value_type::ansi] = value_source::to_nul;
  sources[value_type::bxml] = value_source::composed;
  return sources;
}();

inline value_source source_of(std::uint16_t type) {
  return type < value_sources.size() ? value_sources[type] : value_source::none;
}

// A value in its block: `data` is readable for `readable` bytes, to the block's end, because some
// types are read without regard to `size`.
struct raw_value {
  const std::byte* data = nullptr;
  std::size_t readable = 0;
  std::uint16_t type = 0;
  std::uint16_t size = 0;
  bool full_sid = false;  // show a SID whole, whatever its length
};

// The value of `size` bytes at chunk offset `offset`; bytes past the end are not readable.
inline raw_value raw_value_at(const byte_cursor& chunk, std::uint64_t offset, std::uint16_t type,
                              std::uint16_t size) {
  const std::size_t at = offset < chunk.size() ? static_cast<std::size_t>(offset) : chunk.size();
  return {chunk.bytes().data() + at, chunk.size() - at, type, size, false};
}

// Longest text of a value whose length its size does not say: a float, a time, a GUID.
inline constexpr std::size_t fixed_text_bound = 64;
// Length of a text of type ANSI: the bytes up to the first NUL, without regard to the size.
std::size_t ansi_length(const raw_value& value);

// The cost of a value of fixed width, in bytes read.
inline constexpr std::size_t fixed_source_bytes = 8;

// Bytes of the file that are read to make the value's text, except for composed ones.
inline std::size_t value_source_bytes(const raw_value& value) {
  switch (source_of(value.type)) {
    case value_source::fixed:
      return fixed_source_bytes;
    case value_source::sized:
      return value.size < value.readable ? value.size : value.readable;
    case value_source::to_nul:
      return ansi_length(value);
    default:
      return 0;
  }
}

// Maximum bytes of buffer that `value_writer::write` needs for the value.
inline std::size_t value_text_bound(const raw_value& value) {
  const std::size_t size = value.type == value_type::ansi ? ansi_length(value) : 3u * value.size;
  return size + fixed_text_bound;
}

// What stands behind each run of UTF-16 text in a binary value.
inline constexpr std::string_view plain_run_end = " ;";

// Writes values; remembers the day of the last time, since neighbours share it.
class value_writer {
 public:
  // Writes the text to `out` and returns its end. Adds to `kinds` what kinds of characters of
  // `text_kind` the text may hold; the text of a type that is not free text holds none of them.
  char* write(char* out, const raw_value& value, unsigned& kinds,
              std::string_view run_end = plain_run_end);

  // The same for the small numbers that most values are; null, with nothing written, for others.
  static char* write_small_number(char* out, const raw_value& value) {
    if (value.readable < sizeof(std::uint64_t)) return nullptr;
    switch (value.type) {
      case value_type::null:
        *out = '0';
        return out + 1;
      case value_type::uint8:
        return write_number(out, read<std::uint8_t>(value));
      case value_type::uint16:
        return write_number(out, read<std::uint16_t>(value));
      case value_type::uint32:
        if (value.size != sizeof(std::uint32_t)) return nullptr;
        return write_number(out, read<std::uint32_t>(value));
      case value_type::hex64:
        out[0] = '0';
        out[1] = 'x';
        return write_all_hex(out + 2, read<std::uint64_t>(value));
      default:
        return nullptr;
    }
  }

 private:
  template <typename T>
  static T read(const raw_value& value) {
    T number;
    std::memcpy(&number, value.data, sizeof(T));
    return number;
  }
  static char* write_number(char* out, std::uint32_t number) {
    if (number >= 10) return std::to_chars(out, out + fixed_text_bound, number).ptr;
    *out = static_cast<char>('0' + number);
    return out + 1;
  }

  filetime_writer times_;
};

// The text, appended.
void append_value_text(std::string& out, const raw_value& value);

// Two-digit hexadecimal numbers with single blanks between, appended.
void append_hex_bytes(std::string& out, std::span<const std::byte> bytes);

}  // namespace zanvik
