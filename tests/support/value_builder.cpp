#include "value_builder.h"

#include <bit>
#include <utility>

namespace zanvik::testing::slot {

namespace {

template <typename T>
slot_value integer(std::uint16_t type, T value) {
  slot_value out{.type = type};
  for (std::size_t i = 0; i < sizeof(T); ++i) {
    append_u8(out.bytes, static_cast<std::uint8_t>(static_cast<std::uint64_t>(value) >> (8 * i)));
  }
  return out;
}

}  // namespace

slot_value null(std::size_t size_bytes) { return {.type = 0, .bytes = byte_vector(size_bytes)}; }

slot_value utf16(std::string_view utf8) {
  slot_value out{.type = 1};
  append_utf16(out.bytes, utf8);
  return out;
}

slot_value utf16z(std::string_view utf8) {
  slot_value out{.type = 1};
  append_utf16z(out.bytes, utf8);
  return out;
}

slot_value ansi(std::string_view text) {
  slot_value out{.type = 2, .bytes = bytes_of(text)};
  append_u8(out.bytes, 0);
  return out;
}

slot_value int8(std::int8_t value) { return integer(3, value); }
slot_value uint8(std::uint8_t value) { return integer(4, value); }
slot_value int16(std::int16_t value) { return integer(5, value); }
slot_value uint16(std::uint16_t value) { return integer(6, value); }
slot_value int32(std::int32_t value) { return integer(7, value); }
slot_value uint32(std::uint32_t value) { return integer(8, value); }
slot_value int64(std::int64_t value) { return integer(9, value); }
slot_value uint64(std::uint64_t value) { return integer(10, value); }
slot_value float32(float value) { return integer(11, std::bit_cast<std::uint32_t>(value)); }
slot_value float64(double value) { return integer(12, std::bit_cast<std::uint64_t>(value)); }
slot_value boolean(bool value) { return integer(13, std::uint32_t{value}); }
slot_value binary(byte_vector bytes) { return raw(14, std::move(bytes)); }
slot_value guid(std::string_view text) { return raw(15, guid_bytes(text)); }
slot_value size32(std::uint32_t value) { return integer(16, value); }
slot_value size64(std::uint64_t value) { return integer(16, value); }
slot_value filetime(std::uint64_t value) { return integer(17, value); }

slot_value systemtime(int year, int month, int day, int hour, int minute, int second,
                      int millisecond, int day_of_week) {
  slot_value out{.type = 18};
  for (const int part : {year, month, day_of_week, day, hour, minute, second, millisecond}) {
    append_u16(out.bytes, static_cast<std::uint16_t>(part));
  }
  return out;
}

slot_value sid(std::string_view text) { return raw(19, sid_bytes(text)); }
slot_value hex32(std::uint32_t value) { return integer(20, value); }
slot_value hex64(std::uint64_t value) { return integer(21, value); }
slot_value bxml(bxml_writer writer) { return {.type = 33, .nested = std::move(writer)}; }

slot_value multi_utf16(std::initializer_list<std::string_view> texts) {
  slot_value out{.type = 129};
  for (const std::string_view text : texts) append_utf16z(out.bytes, text);
  return out;
}

slot_value raw(std::uint16_t type, byte_vector bytes) {
  return {.type = type, .bytes = std::move(bytes)};
}

slot_value with_declared_size(slot_value value, std::uint16_t size_bytes) {
  value.declared_size = size_bytes;
  return value;
}

}  // namespace zanvik::testing::slot
