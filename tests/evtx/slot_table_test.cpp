// Slot tables, and the templates found for records.
#include "evtx/bxml/slot_table.h"

#include <gtest/gtest.h>

#include "read_back.h"

namespace zanvik::testing {
namespace {

struct parsed {
  bool good = false;
  std::vector<slot_entry> slots;
};

// The slots of the table that `writer` puts at chunk offset `at`.
parsed parse(const bxml_writer& writer, std::size_t at = 0x400) {
  byte_vector chunk(at);
  chunk_tables tables;
  bxml_builder xml(chunk, tables);
  writer(xml);
  chunk.resize(chunk_bytes);
  exact_buffer bytes(chunk);
  work_budget budget;
  bxml_memory memory;
  const chunk_view view{byte_cursor(bytes.span()), chunk.size(), 0, &budget, &memory};
  parsed result;
  result.good = parse_substitution_array(view, at, result.slots);
  return result;
}
parsed parse(const std::vector<slot_value>& slots, std::size_t at = 0x400) {
  return parse([&](bxml_builder& xml) { xml.slot_table(slots); }, at);
}

TEST(slot_table, holds_up_to_96_values) {
  for (const std::size_t count : {0, 1, 96, 97}) {
    const parsed result = parse(std::vector<slot_value>(count, slot::uint8(7)));
    EXPECT_EQ(result.good, count <= 96) << count;
    EXPECT_EQ(result.slots.size(), count <= 96 ? count : 0) << count;
  }
}

TEST(slot_table, the_chunk_s_end_cuts_values_and_tables) {
  // A table of one 1-byte and one 10-byte value: 4 + 8 bytes of head.
  const std::vector<slot_value> values{slot::uint8(1), slot::utf16("abcde")};
  // `rest`: bytes of the chunk from the table on
  const std::tuple<const char*, std::size_t, bool, std::vector<std::uint16_t>, std::uint32_t>
      rows[] = {
          {"one byte to spare", 24, true, {1, 10}, 0},
          {"ends exactly at the end: counts as cut", 23, true, {1, 10}, slot_cut},
          {"one byte less", 22, true, {1, 9}, slot_cut},
          {"nothing left of the last value", 13, true, {1}, slot_cut},
          {"nothing left of any", 12, false, {}, 0},
          {"no room for a table", 7, false, {}, 0},
      };
  for (const auto& [reason, rest, good, expected_sizes, last_flags] : rows) {
    const parsed result = parse(values, chunk_bytes - rest);
    EXPECT_EQ(result.good, good) << reason;
    std::vector<std::uint16_t> sizes;
    for (const slot_entry& slot : result.slots) sizes.push_back(slot.size);
    EXPECT_EQ(sizes, expected_sizes) << reason;
    if (!sizes.empty()) {
      EXPECT_EQ(result.slots.back().flags, last_flags) << reason;
    }
  }
}

const template_definition inner{
    "22222222-0000-0000-0000-000000000000", [](bxml_builder& x) {
      x.fragment_header().open("In").close_start().normal_sub(0, 1).end_element().end_of_stream();
    }};

TEST(slot_table, nested_plain_streams_become_user_data) {
  const slot_value plain = slot::bxml([](bxml_builder& x) {
    x.fragment_header().open("A").close_start().value("b").end_element().end_of_stream();
  });
  const slot_value nothing = slot::bxml([](bxml_builder& x) { x.raw(bytes_of({7, 7, 7, 7})); });
  const parsed result = parse({plain, slot::uint8(6)});
  ASSERT_EQ(result.slots.size(), 2u);
  EXPECT_EQ(result.slots[0].name, "UserData");
  EXPECT_EQ(result.slots[0].text, "\n<A>\"b\"</A>");
  // A slot that gives nothing is skipped, and what follows is read from its place.
  const parsed shifted = parse({nothing, slot::uint8(6)});
  ASSERT_EQ(shifted.slots.size(), 1u);
  EXPECT_EQ(shifted.slots[0].offset, 0x400u + 4 + 8);
}

TEST(slot_table, a_nested_definition_past_the_block_shifts_the_values_behind) {
  const slot_value lost = slot::bxml([](bxml_builder& x) {
    x.instance_head_only(instance_head::with_fragment, 9, chunk_bytes + 1);
    x.slot_table({slot::uint8(5)});
  });
  const parsed result = parse({slot::uint8(1), lost, slot::uint16(6)});
  ASSERT_EQ(result.slots.size(), 2u);
  EXPECT_EQ(result.slots[1].type, value_type::uint16);
  EXPECT_EQ(result.slots[1].offset, 0x400u + 4 + 12 + 1);
  const slot_value refused =
      slot::bxml([](bxml_builder& x) { x.template_instance(inner, std::vector<slot_value>(97)); });
  const parsed kept = parse({refused, slot::uint16(6)});
  ASSERT_EQ(kept.slots.size(), 1u) << "a refused table gives no slot, but is stepped over";
  EXPECT_NE(kept.slots[0].offset, 0x400u + 4 + 8);
}

// Templates of records: a body with one element that names slot 0.
template_definition naming(const char* guid, const char* name) {
  return {guid, [name](bxml_builder& x) {
            x.fragment_header().open(name).close_start().normal_sub(0, 6).end_element();
            x.end_of_stream();
          }};
}
constexpr const char* guid_a = "aaaaaaaa-0000-0000-0000-00000000000a";
const std::uint64_t when = filetime(2024, 1, 2);

using slot_lines = std::vector<std::string>;

// Slots of the last record, the same by both paths.
slot_lines last_slots(const file_bytes& log) {
  const auto quick = walk(log, true);
  const auto plain = walk(log, false);
  EXPECT_EQ(quick.size(), plain.size());
  if (quick.empty() || plain.empty()) return {"no record"};
  EXPECT_EQ(quick.back().all, plain.back().all);
  return plain.back().slots;
}

TEST(record_template, is_found_by_the_guid_of_its_definition) {
  const template_definition first = naming(guid_a, "First");
  // The definition is in the first record, which has no values of its own and is lost.
  auto log = log_builder().chunk(
      {plain_record(1, when, [&](bxml_builder& x) { x.raw(byte_vector(8)).definition(first); }),
       template_record(2, when, first, {slot::uint16(5)})});
  EXPECT_EQ(last_slots(log), slot_lines{"First=5"}) << "by the chunk's table";
  const std::size_t instance = log.content_offset(0, 1);
  auto other_id = log;
  other_id.poke_u32(instance + 6, 1);
  EXPECT_EQ(last_slots(other_id), slot_lines{"First=5"}) << "the id does not matter then";
  const auto second =
      log_builder()
          .chunk({record(1)})
          .chunk({plain_record(2, when,
                               [&](bxml_builder& x) { x.raw(byte_vector(8)).definition(first); }),
                  template_record(3, when, first, {slot::uint16(6)})});
  EXPECT_EQ(last_slots(second), slot_lines{"First=6"}) << "each chunk has a table";

  auto no_table = log;
  for (std::size_t i = 0; i < 32; ++i) no_table.poke_u32(log.chunk_offset(0) + 384 + 4 * i, 0);
  EXPECT_EQ(last_slots(no_table), slot_lines{"=5"}) << "what no table has is looked for elsewhere";
  no_table.poke_u32(instance + 6, 1);
  EXPECT_TRUE(walk(no_table).empty()) << "and the id must be right";
}

TEST(record_template, that_a_record_brings_serves_those_behind_it) {
  const template_definition own = naming(guid_a, "Own");
  auto log = log_builder()
                 .chunk({template_record(1, when, own, {slot::uint16(5)}),
                         template_record(2, when, own, {slot::uint16(6)})})
                 .chunk({record(3)});
  for (std::size_t i = 0; i < 32; ++i) log.poke_u32(log.chunk_offset(0) + 384 + 4 * i, 0);
  const auto records = walk(log);
  ASSERT_EQ(record_numbers(records), (std::vector<std::uint64_t>{1, 2, 3}));
  EXPECT_EQ(records[0].slots, slot_lines{"Own=5"});
  EXPECT_EQ(records[1].slots, slot_lines{"Own=6"});
  // A definition of the first chunk is not one of the second.
  log.poke_u32(log.content_offset(1, 0) + 10, 0x210);
  EXPECT_EQ(record_numbers(walk(log)), (std::vector<std::uint64_t>{1, 2}));
}

TEST(record_template, the_first_of_one_guid_stays) {
  const template_definition first = naming(guid_a, "First");
  const template_definition second = naming(guid_a, "Other");
  auto log = log_builder().chunk(
      {plain_record(1, when, [&](bxml_builder& x) { x.raw(byte_vector(8)).definition(first); }),
       plain_record(2, when, [&](bxml_builder& x) {
         x.instance_head_only(instance_head::with_fragment, 0xaaaaaaaa, x.position() + 14);
         x.definition(second).slot_table({slot::uint16(5)});
       })});
  const std::uint32_t first_at =
      static_cast<std::uint32_t>(log.content_offset(0, 0) - log.chunk_offset(0)) + 8;
  const std::uint32_t second_at =
      static_cast<std::uint32_t>(log.content_offset(0, 1) - log.chunk_offset(0)) + 14;
  const auto with_table = [&](std::uint32_t a, std::uint32_t b) {
    auto changed = log;
    for (std::size_t i = 0; i < 32; ++i) changed.poke_u32(log.chunk_offset(0) + 384 + 4 * i, 0);
    changed.poke_u32(log.chunk_offset(0) + 384 + 4 * 3, a);
    changed.poke_u32(log.chunk_offset(0) + 384 + 4 * 9, b);
    return changed;
  };
  EXPECT_EQ(last_slots(with_table(first_at, second_at)), slot_lines{"First=5"});
  EXPECT_EQ(last_slots(with_table(second_at, first_at)), slot_lines{"Other=5"});
}

TEST(record_template, the_last_nested_template_names_the_children_of_all) {
  const auto nested = [](const template_definition& definition) {
    return slot::bxml(
        [definition](bxml_builder& x) { x.template_instance(definition, {slot::uint16(7)}); });
  };
  const template_definition one = naming("bbbbbbbb-0000-0000-0000-00000000000b", "One");
  const template_definition two = naming("cccccccc-0000-0000-0000-00000000000c", "Two");
  const template_definition own = naming(guid_a, "Own");
  const auto log = log_builder().chunk(
      {template_record(1, when, own, {slot::uint16(5), nested(one), nested(two)})});
  EXPECT_EQ(last_slots(log), (slot_lines{"Own=5", "=", "01:Two=7", "=", "01:Two=7"}));
}

TEST(record_template, a_definition_past_the_chunk_drops_the_record) {
  auto log = log_builder().chunk({record(1), record(2)}).chunk({record(3)});
  log.poke_u32(log.content_offset(0, 1) + 10, chunk_bytes + 1);
  EXPECT_EQ(record_numbers(walk(log)), (std::vector<std::uint64_t>{1, 3}));
}

}  // namespace
}  // namespace zanvik::testing
