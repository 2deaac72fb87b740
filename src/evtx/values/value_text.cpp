#include "evtx/values/value_text.h"

#include <algorithm>
#include <charconv>
#include <cstdio>
#include <cstring>
#include <span>
#include <string_view>

#include "base/digits.h"
#include "base/limits.h"
#include "base/time_format.h"
#include "base/utf16.h"
#include "base/utf16_write.h"

namespace zanvik {
namespace {

// Maximum bytes of the reader's number texts, including the one that ends them.
constexpr std::size_t number_buffer_bytes = 37;

template <typename T>
bool read_value(const raw_value& value, T& out) {
  if (value.readable < sizeof(T)) return false;
  std::memcpy(&out, value.data, sizeof(T));
  return true;
}

// The value as `T`, in decimal.
template <typename T>
char* write_number(char* out, const raw_value& value) {
  T number;
  if (!read_value(value, number)) return out;
  return std::to_chars(out, out + fixed_text_bound, +number).ptr;
}

template <typename T>
char* write_hex_number(char* out, const raw_value& value) {
  T number;
  if (!read_value(value, number)) return out;
  *out++ = '0';
  *out++ = 'x';
  return write_all_hex(out, number);
}

template <typename T>
char* write_float(char* out, const raw_value& value) {
  T number;
  if (!read_value(value, number)) return out;
  char text[number_buffer_bytes + 1];
  const int length = std::snprintf(text, sizeof(text), "%f", static_cast<double>(number));
  if (length < 0 || length > static_cast<int>(number_buffer_bytes)) {
    *out++ = '0';
    return out;
  }
  // A text that fills the buffer loses its last character to the terminator.
  const auto kept =
      std::min<std::size_t>(static_cast<std::size_t>(length), number_buffer_bytes - 1);
  std::memcpy(out, text, kept);
  return out + kept;
}

char* write_hex_bytes(char* out, std::span<const std::byte> bytes) {
  for (std::size_t i = 0; i < bytes.size(); ++i) {
    if (i != 0) *out++ = ' ';
    out = write_hex_pair(out, static_cast<std::uint8_t>(bytes[i]));
  }
  return out;
}

// Bytes that the value really has: its size, or fewer at the end of the block.
std::span<const std::byte> value_bytes(const raw_value& value) {
  return {value.data, std::min<std::size_t>(value.size, value.readable)};
}

char* write_ansi(char* out, const raw_value& value) {
  const std::size_t length = ansi_length(value);
  if (length != 0) std::memcpy(out, value.data, length);
  return out + length;
}

// Strings, each ended by a NUL: empty ones are kept, and there is none after the last NUL.
char* write_multi_string(char* out, std::span<const std::byte> bytes) {
  std::size_t at = 0;
  bool first = true;
  while (bytes.size() - at >= 2) {
    std::size_t end = at;
    while (bytes.size() - end >= 2 &&
           (bytes[end] != std::byte{0} || bytes[end + 1] != std::byte{0}))
      end += 2;
    if (!first) {
      *out++ = ';';
      *out++ = ' ';
    }
    first = false;
    out = write_utf8_from_utf16(out, bytes.subspan(at, end - at));
    at = std::min(end + 2, bytes.size());
  }
  return out;
}

char* write_binary(char* out, std::span<const std::byte> bytes, std::string_view run_end) {
  constexpr std::size_t shortest_run = 4;  // characters
  char* const begin = out;
  for_each_utf16_run(bytes, shortest_run, [&](utf16_run run) {
    for (std::size_t i = 0; i < run.units; ++i) {
      *out++ = static_cast<char>(bytes[run.offset + 2 * i]);
    }
    out = std::copy(run_end.begin(), run_end.end(), out);
  });
  return out == begin ? write_hex_bytes(out, bytes) : out;
}

char* write_system_time(char* out, const raw_value& value) {
  std::uint16_t part[8];  // year, month, day of the week, day, hour, minute, second, milliseconds
  if (!read_value(value, part)) return out;
  return write_system_value(out, {.year = part[0],
                                  .month = part[1],
                                  .day_of_week = part[2],
                                  .day = part[3],
                                  .hour = part[4],
                                  .minute = part[5],
                                  .second = part[6],
                                  .millisecond = part[7]});
}

char* write_filetime(char* out, const raw_value& value, filetime_writer& times) {
  std::uint64_t filetime;
  if (!read_value(value, filetime)) return out;
  return times.write(out, filetime);
}

// Meant: only identifiers of up to 12 bytes, with one sub-authority, have a text; longer ones are
// empty.
char* write_sid(char* out, const raw_value& value) {
  constexpr std::size_t longest = 12;
  if (value.readable < 2) return out;
  const auto byte = [&value](std::size_t i) { return static_cast<unsigned>(value.data[i]); };
  const std::size_t authorities = byte(1);
  if (8 + 4 * authorities > longest || value.readable < 8 + 4 * authorities) return out;
  *out++ = 'S';
  *out++ = '-';
  out = std::to_chars(out, out + 3, byte(0)).ptr;
  *out++ = '-';
  out = std::to_chars(out, out + 3, byte(7)).ptr;  // the last of the authority's six bytes
  for (std::size_t i = 0; i < authorities; ++i) {
    std::uint32_t authority;
    std::memcpy(&authority, value.data + 8 + 4 * i, sizeof(authority));
    *out++ = '-';
    out = std::to_chars(out, out + 10, authority).ptr;
  }
  return out;
}

// The SID as Windows shows it. Nothing if its sub-authorities are not inside the value: they also
// limit the text, to 11 characters for 4 bytes.
char* write_full_sid(char* out, const raw_value& value) {
  constexpr std::size_t head_bytes = 8;  // revision, count, authority
  const auto bytes = value_bytes(value);
  if (bytes.size() < head_bytes) return out;
  const auto byte = [bytes](std::size_t i) { return static_cast<unsigned>(bytes[i]); };
  const std::size_t count = byte(1);
  if (count > (bytes.size() - head_bytes) / 4) return out;
  std::uint64_t authority = 0;
  for (std::size_t i = 2; i < head_bytes; ++i) authority = authority << 8 | byte(i);
  *out++ = 'S';
  *out++ = '-';
  out = std::to_chars(out, out + 3, byte(0)).ptr;
  *out++ = '-';
  if (authority >> 32 != 0) {
    *out++ = '0';
    *out++ = 'x';
    out = write_hex(out, authority, 12);
  } else {
    out = std::to_chars(out, out + 10, authority).ptr;
  }
  for (std::size_t i = 0; i < count; ++i) {
    std::uint32_t sub_authority;
    std::memcpy(&sub_authority, bytes.data() + head_bytes + 4 * i, sizeof(sub_authority));
    *out++ = '-';
    out = std::to_chars(out, out + 10, sub_authority).ptr;
  }
  return out;
}

char* write_text(char* out, std::string_view text) {
  std::memcpy(out, text.data(), text.size());
  return out + text.size();
}

// Any type but UTF-16 text.
char* write_other(char* out, const raw_value& value, std::string_view run_end,
                  filetime_writer& times) {
  const bool is_32_bits = value.size == 4;
  switch (value.type) {
    case value_type::null:
      return write_text(out, "0");
    case value_type::ansi:
      return write_ansi(out, value);
    case value_type::int8:  // meant: signed bytes show as unsigned ones
    case value_type::uint8:
      return write_number<std::uint8_t>(out, value);
    case value_type::int16:
      return write_number<std::int16_t>(out, value);
    case value_type::uint16:
      return write_number<std::uint16_t>(out, value);
    case value_type::int32:
      return is_32_bits ? write_number<std::int32_t>(out, value)
                        : write_number<std::int64_t>(out, value);
    case value_type::uint32:
    case value_type::size_t_:
      return is_32_bits ? write_number<std::uint32_t>(out, value)
                        : write_number<std::int64_t>(out, value);
    case value_type::int64:
    case value_type::uint64:
      return write_number<std::int64_t>(out, value);
    case value_type::float32:
      return write_float<float>(out, value);
    case value_type::float64:
      return write_float<double>(out, value);
    case value_type::boolean:
      if (value.readable == 0) return out;
      return write_text(out, value.data[0] != std::byte{0} ? "true" : "false");
    case value_type::binary:
      return write_binary(out, value_bytes(value), run_end);
    case value_type::guid:
      return value.readable < 16 ? out
                                 : write_guid(out, std::span<const std::byte, 16>(value.data, 16));
    case value_type::filetime:
      return write_filetime(out, value, times);
    case value_type::system_time:
      return write_system_time(out, value);
    case value_type::sid:
      return value.full_sid ? write_full_sid(out, value) : write_sid(out, value);
    case value_type::hex32:
    case value_type::handle:
      return write_hex_number<std::uint32_t>(out, value);
    case value_type::hex64:
      return write_hex_number<std::uint64_t>(out, value);
    case value_type::multi_utf16:
      return write_multi_string(out, value_bytes(value));
    default:
      return out;
  }
}

}  // namespace

std::size_t ansi_length(const raw_value& value) {
  const std::size_t longest = std::min(value.readable, limits::ansi_text_bytes);
  const void* end = std::memchr(value.data, 0, longest);
  return end ? static_cast<std::size_t>(static_cast<const std::byte*>(end) - value.data) : longest;
}

char* value_writer::write(char* out, const raw_value& value, unsigned& kinds,
                          std::string_view run_end) {
  if (value.type == value_type::utf16 || value.type == value_type::xml) {
    std::size_t units;
    return write_utf8_from_utf16(out, value_bytes(value), units, kinds);
  }
  if (is_free_text(value.type)) kinds |= kind_control | kind_separator;  // nobody looks
  return write_other(out, value, run_end, times_);
}

void append_value_text(std::string& out, const raw_value& value) {
  const std::size_t before = out.size();
  out.resize(before + value_text_bound(value));
  unsigned kinds = kind_plain;
  const char* end = value_writer().write(out.data() + before, value, kinds);
  out.resize(static_cast<std::size_t>(end - out.data()));
}

void append_hex_bytes(std::string& out, std::span<const std::byte> bytes) {
  const std::size_t before = out.size();
  out.resize(before + 3 * bytes.size());
  const char* end = write_hex_bytes(out.data() + before, bytes);
  out.resize(static_cast<std::size_t>(end - out.data()));
}

}  // namespace zanvik
