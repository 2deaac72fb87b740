// Values of the kinds that most events consist of, written in one go: the fast part of
// value_writer.h, inline for the walk over a program's steps.
//
// In: a value, and where to write it, with `room` bytes there. Out: the end of its text, or null,
// with nothing written that counts, for any other value: a long one, an array, a size that is not
// its type's. An object serves one event; text that it wrote must stay where it is until `forget`.
#pragma once

#include <cstdint>
#include <cstring>

#include "base/digits.h"
#include "events/event_value.h"
#include "export/escaped_text.h"

namespace zanvik {

class quick_values {
 public:
  quick_values(const std::byte* readable_end, bool& lossy)
      : readable_end_(readable_end), lossy_(lossy) {}

  static constexpr std::size_t room = 4096;

  // As gap::json_value.
  char* json(char* out, const event_value& value) {
    return write<escape_form::json, true>(out, value);
  }
  // Its text.
  template <escape_form form>
  char* text(char* out, const event_value& value) {
    return write<form, false>(out, value);
  }
  // write_iso_time; most events have the same time twice.
  char* time(char* out, std::uint64_t filetime);
  void forget() { time_text_ = nullptr; }

 private:
  // Longest value, in bytes of the log.
  static constexpr std::size_t most_bytes = 640;
  static_assert(escaped_bound(most_bytes) + 2 <= room);

  template <escape_form form, bool json>
  [[gnu::always_inline]] inline char* write(char* out, const event_value& value);
  template <escape_form form>
  char* wide_text(char* out, const event_value& value);
  // Null if the value has not the size of its type.
  template <typename T>
  static char* number(char* out, const event_value& value);

  const std::byte* readable_end_;
  bool& lossy_;
  std::uint64_t filetime_ = 0;
  const char* time_text_ = nullptr;  // of `filetime_`, once it has been written
};

inline char* quick_values::time(char* out, std::uint64_t filetime) {
  constexpr std::ptrdiff_t time_bytes = 28;  // of all but those beyond the year 9999
  if (time_text_ && filetime == filetime_) {
    std::memcpy(out, time_text_, time_bytes);
    return out + time_bytes;
  }
  char* const end = write_iso_time(out, filetime);
  filetime_ = filetime;
  time_text_ = end - out == time_bytes ? out : nullptr;
  return end;
}

template <typename T>
char* quick_values::number(char* out, const event_value& value) {
  if (value.size != sizeof(T)) return nullptr;
  T number;
  std::memcpy(&number, value.data, sizeof(number));
  if (number < 10) {
    *out = static_cast<char>('0' + number);
    return out + 1;
  }
  return number < 100 ? write_decimal_pair(out, static_cast<std::uint32_t>(number))
                      : write_decimal(out, number);
}

template <escape_form form>
char* quick_values::wide_text(char* out, const event_value& value) {
  // Most texts do not end in zeros, which `text_bytes` would leave out.
  const std::size_t size = value.size & ~std::size_t{1};
  const bool whole = size != 0 && (value.data[size - 1] | value.data[size - 2]) != std::byte{0};
  return write_escaped_utf16<form>(out, whole ? value.bytes().first(size) : text_bytes(value),
                                   readable_end_, lossy_);
}

template <escape_form form, bool json>
char* quick_values::write(char* out, const event_value& value) {
  if (value.size > most_bytes) return nullptr;
  const auto quoted = [out](auto&& content) {
    char* at = out;
    if constexpr (json) *at++ = '"';
    at = content(at);
    if constexpr (json) *at++ = '"';
    return at;
  };
  switch (value.type) {
    case value_type::null:
      if constexpr (json) {
        std::memcpy(out, "null", 4);
        return out + 4;
      }
      return out;
    case value_type::utf16:
      return quoted([&](char* at) { return wide_text<form>(at, value); });
    case value_type::ansi:
      return quoted(
          [&](char* at) { return write_escaped_ansi<form>(at, text_bytes(value), lossy_); });
    case literal_type:
      return quoted([&](char* at) {
        return write_escaped_utf8<form>(at, {reinterpret_cast<const char*>(value.data), value.size},
                                        lossy_);
      });
    case value_type::uint8:
      return number<std::uint8_t>(out, value);
    case value_type::uint16:
      return number<std::uint16_t>(out, value);
    case value_type::uint32:
      return number<std::uint32_t>(out, value);
    case value_type::uint64:
      return number<std::uint64_t>(out, value);
    case value_type::boolean:
      if (class_of(value) != value_class::boolean) return nullptr;
      return write_plain_value(out, value);
    case value_type::filetime:
      if (value.size != sizeof(std::uint64_t)) return nullptr;
      return quoted([&](char* at) {
        std::uint64_t filetime;
        std::memcpy(&filetime, value.data, sizeof(filetime));
        return time(at, filetime);
      });
    case value_type::guid:
    case value_type::sid:
    case value_type::hex32:
    case value_type::hex64:
      return quoted([&](char* at) { return write_plain_value(at, value); });
    default:
      return nullptr;
  }
}

}  // namespace zanvik
