// Values of an event: where their bytes are and of which type they are, and what they are as text.
//
// The types are those of binary XML (evtx/values/value_text.h), read for what they are: signed
// bytes are signed, SIDs come whole, a value whose size is not its type's is shown as bytes. Text
// is all that needs care in a form (quotes, line breaks); everything else is digits, letters and
// punctuation, and comes from `write_plain_value`.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>

#include "evtx/values/value_text.h"

namespace zanvik {

// A type of ours: UTF-8 that stands in a template.
inline constexpr std::uint16_t literal_type = 0x100;
// Set in the type of an array of values.
inline constexpr std::uint16_t array_bit = 0x80;

struct event_value {
  const std::byte* data = nullptr;
  std::uint32_t size = 0;  // bytes
  std::uint16_t type = value_type::null;
  std::uint16_t child = 0;  // number of the instance that nested binary XML is; 0 for none

  bool absent() const { return type == value_type::null; }
  bool is_array() const { return type >= array_bit && type < literal_type; }
  bool is_nested() const { return type == value_type::bxml; }
  std::span<const std::byte> bytes() const { return {data, size}; }
};

// How a form has to write a value.
enum class value_class : std::uint8_t {
  absent,
  number,   // decimal digits with a sign, or a float
  boolean,  // true, false
  plain,    // digits, letters and punctuation: GUIDs, SIDs, times, hexadecimal numbers, bytes
  utf16,    // UTF-16 text
  ansi,     // text in the Windows code page 1252
  utf8,     // text of a template
  array,
};
value_class class_of(const event_value& value);

// Writes a number, boolean or plain value at `out` and returns its end. Takes at most
// `plain_value_bound` bytes.
char* write_plain_value(char* out, const event_value& value);
inline std::size_t plain_value_bound(const event_value& value) {
  return 2 * std::size_t{value.size} + 64;
}

// "2017-12-26T13:10:29.1368791Z", at most 32 bytes; beyond the year 9999 the FILETIME in decimal.
char* write_iso_time(char* out, std::uint64_t filetime);

// The text's bytes: without the zero units at its end, in which Windows keeps it.
std::span<const std::byte> text_bytes(const event_value& value);

// Takes the next item off the array `rest`, of which `value` has the type; false at its end.
bool next_item(event_value& rest, event_value& item);

// The value as UTF-8, appended; items of an array with ", " between. Lone surrogates become
// U+FFFD.
void append_text(std::string& out, const event_value& value);

// The value as a whole number; false when it is none. Decimal and 0x texts are numbers too.
bool as_unsigned(const event_value& value, std::uint64_t& number);

// The code point at `bytes`[`at`], which moves on by 2 or 4; a lone surrogate gives U+FFFD and sets
// `lossy`.
char32_t next_code_point(std::span<const std::byte> bytes, std::size_t& at, bool& lossy);
// The code point of a byte in code page 1252.
char32_t from_ansi(std::uint8_t byte);

}  // namespace zanvik
