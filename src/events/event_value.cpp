#include "events/event_value.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstring>
#include <initializer_list>

#include "base/digits.h"
#include "base/time_value.h"
#include "base/utf16_write.h"

namespace zanvik {
namespace {

constexpr std::size_t guid_bytes_count = 16;
constexpr std::size_t sid_head_bytes = 8;

template <typename T>
T read(const event_value& value) {
  T number;
  std::memcpy(&number, value.data, sizeof(T));
  return number;
}

// The two upper-case hexadecimal digits of each byte.
constexpr auto upper_pairs = [] {
  constexpr char digits[] = "0123456789ABCDEF";
  std::array<std::array<char, 2>, 256> pairs{};
  for (std::size_t byte = 0; byte < pairs.size(); ++byte) {
    pairs[byte] = {digits[byte >> 4], digits[byte & 15]};
  }
  return pairs;
}();

char* write_byte(char* out, std::byte byte) {
  std::memcpy(out, upper_pairs[std::to_integer<std::size_t>(byte)].data(), 2);
  return out + 2;
}

char* write_bytes(char* out, std::span<const std::byte> bytes) {
  for (const std::byte byte : bytes) out = write_byte(out, byte);
  return out;
}

// Three little-endian fields, then eight bytes in their order.
char* write_guid_value(char* out, const std::byte* bytes) {
  const auto put = [&](std::initializer_list<std::size_t> order, char behind) {
    for (const std::size_t i : order) out = write_byte(out, bytes[i]);
    *out++ = behind;
  };
  *out++ = '{';
  put({3, 2, 1, 0}, '-');
  put({5, 4}, '-');
  put({7, 6}, '-');
  put({8, 9}, '-');
  put({10, 11, 12, 13, 14, 15}, '}');
  return out;
}

bool is_sid(const event_value& value) {
  return value.size >= sid_head_bytes &&
         value.size >= sid_head_bytes + 4 * std::to_integer<std::size_t>(value.data[1]);
}

char* write_sid_value(char* out, const event_value& value) {
  *out++ = 'S';
  *out++ = '-';
  out = write_decimal(out, std::to_integer<std::uint8_t>(value.data[0]));
  *out++ = '-';
  std::uint64_t authority = 0;
  for (std::size_t i = 2; i < sid_head_bytes; ++i) {
    authority = authority << 8 | std::to_integer<std::uint64_t>(value.data[i]);
  }
  if (authority >> 32) {  // Windows writes great ones so
    *out++ = '0';
    *out++ = 'x';
    out = write_hex(out, authority, 12);
  } else {
    out = write_decimal(out, authority);
  }
  const auto count = std::to_integer<std::size_t>(value.data[1]);
  for (std::size_t i = 0; i < count; ++i) {
    std::uint32_t part;
    std::memcpy(&part, value.data + sid_head_bytes + 4 * i, sizeof(part));
    *out++ = '-';
    out = write_decimal(out, part);
  }
  return out;
}

char* write_system_time_value(char* out, const event_value& value) {
  std::uint16_t part[8];  // year, month, day of the week, day, hour, minute, second, milliseconds
  std::memcpy(part, value.data, sizeof(part));
  out = write_decimal(out, part[0], 4);
  *out++ = '-';
  out = write_decimal(out, part[1], 2);
  *out++ = '-';
  out = write_decimal(out, part[3], 2);
  *out++ = 'T';
  out = write_decimal(out, part[4], 2);
  *out++ = ':';
  out = write_decimal(out, part[5], 2);
  *out++ = ':';
  out = write_decimal(out, part[6], 2);
  *out++ = '.';
  out = write_decimal(out, part[7], 3);
  for (const char c : {'0', '0', '0', '0', 'Z'}) *out++ = c;
  return out;
}

template <typename T>
char* write_float_value(char* out, const event_value& value) {
  return std::to_chars(out, out + 48, read<T>(value)).ptr;
}

bool is_hex_type(std::uint16_t type) {
  return type == value_type::hex32 || type == value_type::hex64 || type == value_type::handle;
}

bool is_integer_size(std::uint32_t size) {
  return size == 1 || size == 2 || size == 4 || size == 8;
}

std::uint64_t read_unsigned(const event_value& value) {
  std::uint64_t number = 0;
  std::memcpy(&number, value.data, std::min<std::size_t>(value.size, sizeof(number)));
  return number;
}

std::int64_t read_signed(const event_value& value) {
  const unsigned unused = 64 - 8 * value.size;
  return static_cast<std::int64_t>(read_unsigned(value) << unused) >> unused;
}

bool is_signed_type(std::uint16_t type) {
  return type == value_type::int8 || type == value_type::int16 || type == value_type::int32 ||
         type == value_type::int64;
}

// Bytes of one item of an array of this type; 0 when items end with a zero or say their own size.
std::uint32_t item_bytes(std::uint16_t type) {
  switch (type) {
    case value_type::int8:
    case value_type::uint8:
      return 1;
    case value_type::int16:
    case value_type::uint16:
      return 2;
    case value_type::int32:
    case value_type::uint32:
    case value_type::float32:
    case value_type::boolean:
    case value_type::hex32:
      return 4;
    case value_type::int64:
    case value_type::uint64:
    case value_type::float64:
    case value_type::filetime:
    case value_type::hex64:
    case value_type::size_t_:
      return 8;
    case value_type::guid:
    case value_type::system_time:
      return 16;
    default:
      return 0;
  }
}

// Bytes of the item at the start of `rest` and of what separates it from the next one.
std::pair<std::uint32_t, std::uint32_t> first_item(const event_value& rest, std::uint16_t type) {
  if (const std::uint32_t fixed = item_bytes(type)) {
    return {std::min(fixed, rest.size), 0};
  }
  if (type == value_type::utf16) {
    std::uint32_t at = 0;
    for (; rest.size - at >= 2; at += 2) {
      if (rest.data[at] == std::byte{0} && rest.data[at + 1] == std::byte{0}) return {at, 2};
    }
    return {rest.size, 0};  // an odd byte at the end stays with the last item
  }
  if (type == value_type::ansi) {
    const void* end = std::memchr(rest.data, 0, rest.size);
    if (!end) return {rest.size, 0};
    return {static_cast<std::uint32_t>(static_cast<const std::byte*>(end) - rest.data), 1};
  }
  if (type == value_type::sid && is_sid(rest)) {
    return {static_cast<std::uint32_t>(sid_head_bytes +
                                       4 * std::to_integer<std::uint32_t>(rest.data[1])),
            0};
  }
  return {rest.size, 0};
}

}  // namespace

value_class class_of(const event_value& value) {
  if (value.type >= literal_type) {
    return value.type == literal_type ? value_class::utf8 : value_class::plain;
  }
  if (value.type & array_bit) return value_class::array;
  switch (value.type) {
    case value_type::null:
      return value_class::absent;
    case value_type::utf16:
    case value_type::xml:
      return value_class::utf16;
    case value_type::ansi:
      return value_class::ansi;
    case value_type::int8:
    case value_type::uint8:
    case value_type::int16:
    case value_type::uint16:
    case value_type::int32:
    case value_type::uint32:
    case value_type::int64:
    case value_type::uint64:
    case value_type::size_t_:
      return is_integer_size(value.size) ? value_class::number : value_class::plain;
    case value_type::float32:
      return value.size == 4 && std::isfinite(read<float>(value)) ? value_class::number
                                                                  : value_class::plain;
    case value_type::float64:
      return value.size == 8 && std::isfinite(read<double>(value)) ? value_class::number
                                                                   : value_class::plain;
    case value_type::boolean:
      return is_integer_size(value.size) ? value_class::boolean : value_class::plain;
    default:
      return value_class::plain;
  }
}

char* write_plain_value(char* out, const event_value& value) {
  switch (value.type) {
    case value_type::null:
      return out;
    case value_type::int8:
    case value_type::int16:
    case value_type::int32:
    case value_type::int64:
      if (!is_integer_size(value.size)) break;
      return std::to_chars(out, out + 24, read_signed(value)).ptr;
    case value_type::uint8:
    case value_type::uint16:
    case value_type::uint32:
    case value_type::uint64:
    case value_type::size_t_:
      if (!is_integer_size(value.size)) break;
      return std::to_chars(out, out + 24, read_unsigned(value)).ptr;
    case value_type::hex32:
    case value_type::hex64:
    case value_type::handle:
      if (!is_integer_size(value.size)) break;
      *out++ = '0';
      *out++ = 'x';
      return write_hex(out, read_unsigned(value));
    case value_type::float32:
      if (value.size != 4) break;
      return write_float_value<float>(out, value);
    case value_type::float64:
      if (value.size != 8) break;
      return write_float_value<double>(out, value);
    case value_type::boolean: {
      if (!is_integer_size(value.size)) break;
      const std::string_view text = read_unsigned(value) != 0 ? "true" : "false";
      std::memcpy(out, text.data(), text.size());
      return out + text.size();
    }
    case value_type::guid:
      if (value.size != guid_bytes_count) break;
      return write_guid_value(out, value.data);
    case value_type::filetime:
      if (value.size != 8) break;
      return write_iso_time(out, read_unsigned(value));
    case value_type::system_time:
      if (value.size != 16) break;
      return write_system_time_value(out, value);
    case value_type::sid:
      if (!is_sid(value)) break;
      return write_sid_value(out, value);
    default:
      break;
  }
  return write_bytes(out, value.bytes());
}

char* write_iso_time(char* out, std::uint64_t filetime) {
  constexpr std::uint64_t year_10000 = 2'650'467'744'000'000'000;
  if (filetime >= year_10000) return write_decimal(out, filetime);
  // Days since 1601, which begins a cycle of 400 years, in years that begin with March.
  const std::uint64_t shifted = filetime / qx::ticks_per_day + 306;  // since 1600-03-01
  const std::uint64_t cycle = shifted / 146'097;
  const auto day = static_cast<std::uint32_t>(shifted % 146'097);
  const std::uint32_t year = (day - day / 1'460 + day / 36'524 - day / 146'096) / 365;
  const std::uint32_t of_year = day - (365 * year + year / 4 - year / 100);
  const std::uint32_t month = (5 * of_year + 2) / 153;
  const std::uint64_t calendar = 1600 + 400 * cycle + year + (month >= 10 ? 1 : 0);
  const auto ticks = filetime % qx::ticks_per_day;
  const auto seconds = static_cast<std::uint32_t>(ticks / qx::ticks_per_second);
  const auto fraction = static_cast<std::uint32_t>(ticks % qx::ticks_per_second);
  const std::uint32_t minutes = seconds / 60;
  out = write_decimal_pair(out, static_cast<std::uint32_t>(calendar) / 100);
  out = write_decimal_pair(out, static_cast<std::uint32_t>(calendar) % 100);
  *out++ = '-';
  out = write_decimal_pair(out, month < 10 ? month + 3 : month - 9);
  *out++ = '-';
  out = write_decimal_pair(out, of_year - (153 * month + 2) / 5 + 1);
  *out++ = 'T';
  out = write_decimal_pair(out, minutes / 60);
  *out++ = ':';
  out = write_decimal_pair(out, minutes % 60);
  *out++ = ':';
  out = write_decimal_pair(out, seconds % 60);
  *out++ = '.';
  const std::uint32_t upper = fraction / 10'000;
  const std::uint32_t lower = fraction % 10'000;
  *out++ = static_cast<char>('0' + upper / 100);
  out = write_decimal_pair(out, upper % 100);
  out = write_decimal_pair(out, lower / 100);
  out = write_decimal_pair(out, lower % 100);
  *out++ = 'Z';
  return out;
}

std::span<const std::byte> text_bytes(const event_value& value) {
  std::size_t size = value.size;
  if (value.type == value_type::ansi) {
    while (size != 0 && value.data[size - 1] == std::byte{0}) --size;
    return {value.data, size};
  }
  size &= ~std::size_t{1};
  while (size != 0 && (value.data[size - 1] | value.data[size - 2]) == std::byte{0}) size -= 2;
  return {value.data, size};
}

bool next_item(event_value& rest, event_value& item) {
  if (rest.size == 0) return false;
  item = rest;
  item.type = static_cast<std::uint16_t>(rest.type & ~array_bit);
  const auto [bytes, behind] = first_item(rest, item.type);
  item.size = bytes;
  rest.data += bytes + behind;
  rest.size -= bytes + behind;
  return true;
}

char32_t next_code_point(std::span<const std::byte> bytes, std::size_t& at, bool& lossy) {
  const auto unit_at = [&bytes](std::size_t i) {
    return static_cast<char32_t>(std::to_integer<unsigned>(bytes[i]) |
                                 std::to_integer<unsigned>(bytes[i + 1]) << 8);
  };
  const char32_t unit = unit_at(at);
  at += 2;
  if (unit < 0xd800 || unit > 0xdfff) return unit;
  if (unit < 0xdc00 && bytes.size() - at >= 2) {
    const char32_t low = unit_at(at);
    if (low >= 0xdc00 && low <= 0xdfff) {
      at += 2;
      return 0x10000 + ((unit & 0x3ff) << 10) + (low & 0x3ff);
    }
  }
  lossy = true;
  return 0xfffd;
}

char32_t from_ansi(std::uint8_t byte) {
  static constexpr char16_t high[32] = {
      0x20ac, 0x81,   0x201a, 0x0192, 0x201e, 0x2026, 0x2020, 0x2021, 0x02c6, 0x2030, 0x0160,
      0x2039, 0x0152, 0x8d,   0x017d, 0x8f,   0x90,   0x2018, 0x2019, 0x201c, 0x201d, 0x2022,
      0x2013, 0x2014, 0x02dc, 0x2122, 0x0161, 0x203a, 0x0153, 0x9d,   0x017e, 0x0178};
  return byte >= 0x80 && byte < 0xa0 ? high[byte - 0x80] : byte;
}

void append_text(std::string& out, const event_value& value) {
  const auto put = [&out](char32_t code_point) {
    char utf8[4];
    out.append(utf8, static_cast<std::size_t>(write_utf8(utf8, code_point) - utf8));
  };
  switch (class_of(value)) {
    case value_class::absent:
      return;
    case value_class::utf8:
      out.append(reinterpret_cast<const char*>(value.data), value.size);
      return;
    case value_class::utf16: {
      const auto bytes = text_bytes(value);
      bool lossy = false;
      for (std::size_t at = 0; at < bytes.size();) put(next_code_point(bytes, at, lossy));
      return;
    }
    case value_class::ansi:
      for (const std::byte byte : text_bytes(value))
        put(from_ansi(std::to_integer<std::uint8_t>(byte)));
      return;
    case value_class::array: {
      event_value rest = value;
      event_value item;
      for (bool first = true; next_item(rest, item); first = false) {
        if (!first) out += ", ";
        append_text(out, item);
      }
      return;
    }
    default: {
      const std::size_t before = out.size();
      out.resize(before + plain_value_bound(value));
      out.resize(
          static_cast<std::size_t>(write_plain_value(out.data() + before, value) - out.data()));
    }
  }
}

bool as_unsigned(const event_value& value, std::uint64_t& number) {
  const value_class kind = class_of(value);
  if (kind == value_class::number || (kind == value_class::plain && is_hex_type(value.type))) {
    if (value.type == value_type::float32 || value.type == value_type::float64) return false;
    if (!is_integer_size(value.size)) return false;
    if (is_signed_type(value.type)) {
      number = static_cast<std::uint64_t>(read_signed(value));
      return read_signed(value) >= 0;
    }
    number = read_unsigned(value);
    return true;
  }
  if (kind != value_class::utf8 && kind != value_class::utf16) return false;
  std::string text;
  append_text(text, value);
  const bool hex = text.starts_with("0x") || text.starts_with("0X");
  const char* const begin = text.data() + (hex ? 2 : 0);
  const char* const end = text.data() + text.size();
  const auto result = std::from_chars(begin, end, number, hex ? 16 : 10);
  return begin != end && result.ec == std::errc() && result.ptr == end;
}

}  // namespace zanvik
