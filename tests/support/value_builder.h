// Values for the slots of a template record, one function for each type.
//
// In: a value in the form that is natural for a test. Out: a slot_value, the type code and the
// bytes for the record's slot table. A nested binary XML value has no bytes yet, because they
// depend on its place in the chunk: it has the function that writes them.
#pragma once

#include <cstdint>
#include <functional>
#include <initializer_list>
#include <optional>
#include <string_view>
#include <vector>

#include "byte_builder.h"

namespace zanvik::testing {

class bxml_builder;
using bxml_writer = std::function<void(bxml_builder&)>;

struct slot_value {
  std::uint16_t type = 0;
  byte_vector bytes{};
  bxml_writer nested{};                          // for type 33; writes instead of `bytes`
  std::optional<std::uint16_t> declared_size{};  // put into the descriptor instead of the true size
};

namespace slot {

slot_value null(std::size_t size_bytes = 0);  // 0
slot_value utf16(std::string_view utf8);      // 1, without a NUL
slot_value utf16z(std::string_view utf8);     // 1, with a NUL, as many real logs have it
slot_value ansi(std::string_view text);       // 2, with a NUL
slot_value int8(std::int8_t value);           // 3
slot_value uint8(std::uint8_t value);         // 4
slot_value int16(std::int16_t value);         // 5
slot_value uint16(std::uint16_t value);       // 6
slot_value int32(std::int32_t value);         // 7
slot_value uint32(std::uint32_t value);       // 8
slot_value int64(std::int64_t value);         // 9
slot_value uint64(std::uint64_t value);       // 10
slot_value float32(float value);              // 11
slot_value float64(double value);             // 12
slot_value boolean(bool value);               // 13, four bytes
slot_value binary(byte_vector bytes);         // 14
slot_value guid(std::string_view text);       // 15
slot_value size32(std::uint32_t value);       // 16
slot_value size64(std::uint64_t value);       // 16
slot_value filetime(std::uint64_t value);     // 17
slot_value systemtime(int year, int month, int day, int hour, int minute, int second,
                      int millisecond, int day_of_week = 0);            // 18
slot_value sid(std::string_view text);                                  // 19
slot_value hex32(std::uint32_t value);                                  // 20
slot_value hex64(std::uint64_t value);                                  // 21
slot_value bxml(bxml_writer writer);                                    // 33
slot_value multi_utf16(std::initializer_list<std::string_view> texts);  // 129, each with a NUL
slot_value raw(std::uint16_t type, byte_vector bytes);
// Any value with a wrong size in its descriptor.
slot_value with_declared_size(slot_value value, std::uint16_t size_bytes);

}  // namespace slot

}  // namespace zanvik::testing
