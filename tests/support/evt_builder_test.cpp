// Cases that no sample has, compared with bytes worked out by hand, so that a reader's test does
// not depend on a mistake in a builder. The samples were read back once by a separately written
// decoder, and samples_test compares them with their bytes.
#include "evt_builder.h"

#include <gtest/gtest.h>

#include <string>

namespace zanvik::testing {
namespace {

std::string hex(std::span<const std::byte> bytes) {
  constexpr std::string_view digits = "0123456789abcdef";
  std::string text;
  for (const std::byte b : bytes) {
    text.push_back(digits[std::to_integer<unsigned>(b) >> 4]);
    text.push_back(digits[std::to_integer<unsigned>(b) & 0xf]);
  }
  return text;
}

// Hexadecimal text as `hex` returns it, from one with blanks between its parts.
std::string packed(std::string text) {
  std::erase(text, ' ');
  return text;
}

std::string hex_at(const file_bytes& file, std::size_t offset, std::size_t size) {
  return hex(std::span<const std::byte>(file.bytes()).subspan(offset, size));
}

TEST(crc32, has_the_check_value_of_its_kind) {
  EXPECT_EQ(crc32(bytes_of("123456789")), 0xcbf43926u);
  EXPECT_EQ(crc32(bytes_of("56789"), crc32(bytes_of("1234"))), 0xcbf43926u);
}

TEST(evt_builder, record_and_cursor_are_those_of_the_format) {
  const auto log = evt_builder()
                       .add({.record_num = 9,
                             .time_generated = 1,
                             .event_id = 0xc0001234,
                             .event_type = 16,
                             .event_category = 3,
                             .source = "S",
                             .computer = "C",
                             .sid = "S-1-5-18",
                             .strings = {"a", "bc"},
                             .data = bytes_of({0xee})})
                       .cursor();
  EXPECT_EQ(hex_at(log, 0, 32),
            packed("30000000 4c664c65 01000000 01000000 30000000 8c000000 0a000000 09000000"));
  // Head 56; names 8; SID 12 at 64; strings 10 at 76; data at 86, padded to 88; the size: 92.
  EXPECT_EQ(hex_at(log, 48, 92),
            packed("5c000000 4c664c65 09000000 01000000 01000000 341200c0 1000 0200 0300 0000 "
                   "00000000 4c000000 0c000000 40000000 01000000 56000000 53000000 43000000 "
                   "0101000000000005 12000000 61000000 620063000000 ee00 5c000000"));
  EXPECT_EQ(hex_at(log, 140, 40), packed("28000000 11111111 22222222 33333333 44444444 30000000 "
                                         "8c000000 0a000000 09000000 28000000"));
}

}  // namespace
}  // namespace zanvik::testing
