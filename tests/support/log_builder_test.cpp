// The builders against bytes worked out by hand, so that a reader's test does not rest on a
// builder's slip. The same layouts were read back once by a decoder written apart from these.
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

// The entry of the name "Name": no link, its hash 0x954b, four units, a NUL behind them.
constexpr const char* name_entry = "00000000 4b95 0400 4e0061006d0065000000";

TEST(bxml_builder, tokens_are_those_of_the_format) {
  const struct {
    const char* reason;
    bxml_writer writer;
    std::string expected;
  } rows[] = {
      {"fragment header and end of stream",
       [](bxml_builder& x) { x.fragment_header().end_of_stream(); }, "0f01010000"},
      {"element with id: size counts from behind itself, the name stands at 0x1b",
       [](bxml_builder& x) { x.open("Name").close_empty(); },
       std::string("01 ffff 17000000 1b000000") + name_entry + "03"},
      {"element without id: the name stands at 0x19",
       [](bxml_builder& x) { x.open("Name", element_form::without_id).close_empty(); },
       std::string("01 17000000 19000000") + name_entry + "03"},
      {"element with its name inline, without offset and link",
       [](bxml_builder& x) { x.open("Name", element_form::inline_name).close_empty(); },
       "01 0f000000 4b95 0400 4e0061006d0065000000 03"},
      {"second use of a name refers to the first",
       [](bxml_builder& x) {
         x.open("Name").close_start().open("Name").close_empty().end_element();
       },
       std::string("01 ffff 24000000 1b000000") + name_entry + "02" +
           "01 ffff 05000000 1b000000 03 04"},
      {"attributes: list size without the closing token, more-data flag on all but the last",
       [](bxml_builder& x) {
         x.open_with_attributes("Name", element_form::with_id, 3).attribute("Name").value("a");
         x.attribute("Name").optional_sub(7, 15).close_start().normal_sub(2, 6).end_element();
       },
       std::string("41 0300 34000000 1b000000") + name_entry + "14000000" +
           "46 1b000000 05 01 0100 6100" + "06 1b000000 0e 0700 0f" + "02" + "0d 0200 06 04"},
      {"references, plain and with more to come; the entity's name inline by offset",
       [](bxml_builder& x) { x.char_ref(10).char_ref(13, true).entity_ref("Name", true); },
       std::string("08 0a00 48 0d00 49 1b000000") + name_entry},
      {"entity and attribute with inline names",
       [](bxml_builder& x) {
         x.inline_entity_ref("Name").open_with_attributes("N", element_form::inline_name);
         x.inline_attribute("N").close_empty();
       },
       "09 4b95 0400 4e0061006d0065000000 41 16000000 4e00 0100 4e000000 09000000 06 4e00 0100 "
       "4e000000 03"},
      {"a text past U+FFFF counts two units", [](bxml_builder& x) { x.value("\xf0\x9f\x98\x80"); },
       "05 01 0200 3dd800de"},
  };
  for (const auto& row : rows) EXPECT_EQ(tokens(row.writer), packed(row.expected)) << row.reason;
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

TEST(slot, values_have_the_type_and_bytes_of_the_format) {
  const struct {
    slot_value value;
    int type;
    std::string bytes;
  } rows[] = {
      {slot::null(2), 0, "0000"},
      {slot::utf16("a\xc3\xa9"), 1, "6100e900"},
      {slot::utf16z("a"), 1, "61000000"},
      {slot::ansi("ab"), 2, "616200"},
      {slot::int8(-2), 3, "fe"},
      {slot::uint8(200), 4, "c8"},
      {slot::int16(-2), 5, "feff"},
      {slot::uint16(0x0102), 6, "0201"},
      {slot::int32(-2), 7, "feffffff"},
      {slot::uint32(0x01020304), 8, "04030201"},
      {slot::int64(-2), 9, "feffffffffffffff"},
      {slot::uint64(1), 10, "0100000000000000"},
      {slot::float32(1.5f), 11, "0000c03f"},
      {slot::float64(-2), 12, "00000000000000c0"},
      {slot::boolean(true), 13, "01000000"},
      {slot::binary(bytes_of({1, 2})), 14, "0102"},
      {slot::guid("{6b29fc40-ca47-1067-b31d-00dd010662da}"), 15,
       "40fc296b47ca6710b31d00dd010662da"},
      {slot::size32(1), 16, "01000000"},
      {slot::size64(1), 16, "0100000000000000"},
      {slot::filetime(filetime(1970, 1, 1)), 17, "00803ed5deb19d01"},
      {slot::systemtime(2024, 2, 29, 1, 2, 3, 4, 4), 18, "e8070200 04001d00 01000200 03000400"},
      {slot::sid("S-1-5-21-258"), 19, "0102000000000005 15000000 02010000"},
      {slot::hex32(0x10), 20, "10000000"},
      {slot::hex64(0x10), 21, "1000000000000000"},
      {slot::multi_utf16({"a", "", "b"}), 129, "61000000 0000 62000000"},
      {slot::raw(148, bytes_of({9})), 148, "09"},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(row.value.type, row.type);
    EXPECT_EQ(hex(row.value.bytes), packed(row.bytes)) << "type " << row.type;
  }
}

std::string hex_at(const file_bytes& file, std::size_t offset, std::size_t size) {
  return hex(std::span<const std::byte>(file.bytes()).subspan(offset, size));
}

TEST(crc32, has_the_check_value_of_its_kind) {
  EXPECT_EQ(crc32(bytes_of("123456789")), 0xcbf43926u);
  EXPECT_EQ(crc32(bytes_of("56789"), crc32(bytes_of("1234"))), 0xcbf43926u);
}

TEST(log_builder, places_records_and_declares_them) {
  const auto log = log_builder().chunk({record(7), record(8)}).chunk({record(9)});
  ASSERT_EQ(log.size(), 4096u + 2 * 65536u);
  // Signature; first and last chunk; next number; 128, 3.1, 4096, two chunks.
  EXPECT_EQ(hex_at(log, 0, 44), packed("456c6646696c6500 0000000000000000 0100000000000000 "
                                       "0a00000000000000 80000000 0100 0300 0010 0200"));
  EXPECT_EQ(log.record_offset(0, 0), 4096u + 512u);
  EXPECT_EQ(log.record_offset(1, 0), 4096u + 65536u + 512u);
  const std::size_t second = log.record_offset(0, 1);
  const std::uint32_t first_size = get_u32(log.bytes(), log.record_offset(0, 0) + 4);
  EXPECT_EQ(second, log.record_offset(0, 0) + first_size);
  EXPECT_EQ(get_u32(log.bytes(), second - 4), first_size);
  EXPECT_EQ(hex_at(log, second, 4), "2a2a0000");
  // 2024-01-15 08:00:08 UTC is 1705305608 seconds since 1970, 0x1da4788db3a3400 as FILETIME.
  EXPECT_EQ(hex_at(log, second + 8, 16), packed("0800000000000000 00343adb8847da01"));
  EXPECT_EQ(hex_at(log, second + 24, 5), "0f0101000c");
  const std::uint32_t second_size = get_u32(log.bytes(), second + 4);
  EXPECT_EQ(hex_at(log, log.chunk_offset(0), 44),
            packed("456c6643686e6b00 0700000000000000 0800000000000000 0700000000000000 "
                   "0800000000000000 80000000"));
  EXPECT_EQ(get_u32(log.bytes(), log.chunk_offset(0) + 44), second - 4096);
  EXPECT_EQ(get_u32(log.bytes(), log.chunk_offset(0) + 48), second - 4096 + second_size);
}

TEST(log_builder, tables_and_crcs_are_in_order) {
  const auto log = log_builder().chunk({record(7)});
  const std::size_t chunk = log.chunk_offset(0);
  const std::uint32_t name = get_u32(log.bytes(), chunk + 128 + 4 * (0x954b & 63));
  EXPECT_EQ(hex_at(log, chunk + name, 16), packed(name_entry).substr(0, 32));
  const std::span<const std::byte> bytes = log.bytes();
  byte_vector header(bytes.begin() + 4096, bytes.begin() + 4096 + 120);
  append_bytes(header, bytes.subspan(chunk + 128, 512 - 128));
  EXPECT_EQ(get_u32(log.bytes(), chunk + 124), crc32(header));
  const std::uint32_t free_space = get_u32(log.bytes(), chunk + 48);
  EXPECT_EQ(get_u32(log.bytes(), chunk + 52), crc32(bytes.subspan(chunk + 512, free_space - 512)));
  EXPECT_EQ(get_u32(log.bytes(), 124), crc32(bytes.first(120)));
}

TEST(chunk_builder, slack_and_overrides_stay_out_of_the_declared_part) {
  auto log = log_builder().chunk(chunk_builder({record(7)})
                                     .slack(record(3))
                                     .free_tail(bytes_of("tail"))
                                     .declare(5, 6)
                                     .string_table_entry(0, 0xfffffff0)
                                     .template_table_entry(31, 0x12345678));
  const std::size_t chunk = log.chunk_offset(0);
  ASSERT_EQ(log.record_count(0), 2u);
  EXPECT_EQ(hex_at(log, chunk + 24, 16), packed("0500000000000000 0600000000000000"));
  const std::size_t slack = log.record_offset(0, 1);
  EXPECT_EQ(get_u32(log.bytes(), chunk + 48), slack - chunk);
  EXPECT_EQ(hex_at(log, slack + get_u32(log.bytes(), slack + 4), 4), "7461696c");
  EXPECT_EQ(get_u32(log.bytes(), chunk + 128), 0xfffffff0u);
  EXPECT_EQ(get_u32(log.bytes(), chunk + 508), 0x12345678u);
  log.poke_u16(slack, 0xabcd);
  EXPECT_EQ(hex_at(log, slack, 4), "cdab0000");
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
