// The builders against bytes worked out by hand, so that a reader's test does not rest on a
// builder's slip; what no sample holds, since the samples were read back once by a decoder written
// apart from these, and samples_test holds the builders to their bytes.
#include "log_builder.h"

#include <gtest/gtest.h>

#include <string>

#include "evt_builder.h"

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

// Hexadecimal text as `hex` gives it, from one with blanks between its parts.
std::string packed(std::string text) {
  std::erase(text, ' ');
  return text;
}

// What `writer` appends to a chunk that holds 0x10 bytes already.
std::string tokens(const bxml_writer& writer, chunk_tables tables = {}) {
  byte_vector chunk(0x10);
  bxml_builder xml(chunk, tables);
  writer(xml);
  return hex(std::span<const std::byte>(chunk).subspan(0x10));
}

TEST(bxml_builder, template_is_resident_first_and_referenced_afterwards) {
  const template_definition definition{
      .guid = "04030201-0605-0807-090a-0b0c0d0e0f10",
      .body = [](bxml_builder& x) { x.fragment_header().end_of_stream(); }};
  const std::string first =
      "0f010100 0c 01 01020304 1e000000"  // 0x10 and 14 bytes of head: the next byte
      "00000000 0102030405060708090a0b0c0d0e0f10 05000000 0f01010000 01000000 0100 0400 7f";
  const std::string second = "0c 01 01020304 1e000000 00000000";
  EXPECT_EQ(tokens([&](bxml_builder& x) {
              x.template_instance(definition, {slot::uint8(0x7f)});
              x.template_instance(definition, {}, instance_head::bare);
            }),
            packed(first + second));
}

TEST(slot_table, values_are_packed_and_a_nested_one_knows_its_size) {
  EXPECT_EQ(tokens([](bxml_builder& x) {
              x.slot_table({slot::uint16(0x0201), slot::bxml([](bxml_builder& nested) {
                              nested.fragment_header().end_of_stream();
                            }),
                            slot::with_declared_size(slot::uint8(9), 0x1234)});
            }),
            packed("03000000 0200 0600 0500 2100 3412 0400 0102 0f01010000 09"));
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
