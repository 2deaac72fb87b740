// Records where none is declared: after damage, and in the free tails of chunks.
#include "evtx/container/slack.h"

#include <gtest/gtest.h>

#include <optional>

#include "evtx/bxml/bxml_decoder.h"
#include "read_back.h"

namespace zanvik::testing {
namespace {

// What a test sees of a record: "9" was reached by the walk, "9s" is a candidate of a slack pass;
// with "+" if a candidate was tried before it in its block.
using names = std::vector<std::string>;

class naming_sink : public record_sink {
 public:
  void on_record(record_fields& record) override {
    found.push_back(std::to_string(record.number) + (record.in_slack ? "s" : "") +
                    (record.after_slack && !record.in_slack ? "+" : ""));
    plain.push_back(record.plain);
    last_size = record.size;
    last_flags.clear();
    for (const record_slot& slot : record.slots) last_flags.push_back(slot.flags);
  }
  names found;
  std::vector<bool> plain;
  std::uint32_t last_size = 0;
  std::vector<std::uint16_t> last_flags;
};

// Walks blocks one after the other with one reader, as a run does.
naming_sink sink_after(const std::vector<std::span<std::byte>>& blocks, bool inc_slack = true) {
  const time_formats format;
  record_reader reader(format);
  naming_sink sink;
  walk_settings settings;
  settings.inc_slack = inc_slack;
  for (const auto block : blocks) walk_evtx_block(block, 0, reader, sink, settings);
  return sink;
}
// A log's chunks as one block, which a run reads after the file header.
std::span<const std::byte> chunks_of(const file_bytes& log) {
  return std::span(log.bytes()).subspan(file_header_bytes);
}
naming_sink sink_after(const file_bytes& log, bool inc_slack = true) {
  exact_buffer block(chunks_of(log));
  return sink_after({block.span()}, inc_slack);
}

// Walked without the search for slack, and with it.
void expect_found(const file_bytes& log, const names& without, const names& with,
                  const char* reason) {
  EXPECT_EQ(sink_after(log, false).found, without) << reason;
  EXPECT_EQ(sink_after(log).found, with) << reason;
}

log_builder four_records() {
  return log_builder().chunk({record(7), record(8), record(9), record(10)});
}

constexpr std::uint32_t no_signature = 0x2b2b2b2b;

TEST(resynchronising, the_walk_goes_on_behind_a_damaged_record) {
  auto log = four_records();
  log.poke_u32(log.record_offset(0, 1), no_signature);
  expect_found(log, {"7"}, {"7", "9", "10"}, "in the middle");

  log = four_records();
  log.poke_u32(log.record_offset(0, 0), no_signature);
  expect_found(log, {}, {"8s", "9s", "10s"},
               "the first one: there is no good record to start from, the slack pass finds them");

  log = log_builder().chunk(chunk_builder({record(7), record(8), record(9)}).slack(record(3)));
  log.poke_u32(log.record_offset(0, 1), no_signature);
  expect_found(log, {"7"}, {"7", "9", "3"},
               "the count runs on: a record of the tail stands in for the lost one");
}

TEST(resynchronising, a_refused_candidate_puts_the_search_off_the_grid_of_the_records) {
  // After a rejected hit the search continues four bytes further in steps of eight, so it misses
  // all later records, which are at multiples of eight; the slack pass then finds them.
  const std::tuple<const char*, std::size_t, std::size_t, std::uint64_t, bool, names, names>
      rows[] = {
          {"no time", 2, 16, 0, true, {"7"}, {"7", "9s", "10s"}},
          {"time out of all range", 2, 16, ~std::uint64_t{0}, true, {"7"}, {"7", "9s", "10s"}},
          {"a size of nothing in a record with a signature",
           1,
           4,
           8ull << 32,
           false,
           {"7"},
           {"7", "34359738368s", "9s", "10s"}},
      };
  for (const auto& [reason, record, field, value, damage_second, without, with] : rows) {
    auto log = four_records();
    if (damage_second) log.poke_u32(log.record_offset(0, 1), no_signature);
    if (field == 4) {
      log.poke_u32(log.record_offset(0, record) + 4, 0);
      log.poke_u64(log.record_offset(0, record) + 8, value);
    } else {
      log.poke_u64(log.record_offset(0, record) + field, value);
    }
    expect_found(log, without, with, reason);
  }
}

TEST(resynchronising, a_record_that_leaves_its_chunk_is_cut_to_it) {
  auto log = log_builder().chunk({record(7), record(8), record(9)}).chunk({record(20)});
  const std::size_t third = log.record_offset(0, 2);
  log.poke_u32(log.record_offset(0, 1), no_signature);
  log.poke_u32(third + 4, static_cast<std::uint32_t>(log.chunk_offset(1) - third + 1));
  const auto sink = sink_after({log.span().subspan(file_header_bytes)});
  EXPECT_EQ(sink.found, (names{"7", "9", "20"}));
  EXPECT_EQ(get_u32(log.bytes(), third + 4), log.chunk_offset(1) - third) << "and stays so";
}

// Record 8 cannot be decoded and leads to a bad header, from which the search leads to 8 again:
// only the counter would end that, and it is declared to run through all numbers.
TEST(resynchronising, that_leads_round_and_round_ends) {
  const std::uint64_t all = ~std::uint64_t{0};
  auto log = log_builder().chunk(
      chunk_builder({record(7), raw_record(8, default_filetime(8), byte_vector(40)), record(9)})
          .declare(1, all - 1));
  log.poke_u32(log.record_offset(0, 2), no_signature);
  expect_found(log, {"7"}, {"7"}, "and what stands behind the bad header is not found");
}

// Two declared records, and 3 and 4 in the free tail.
log_builder with_tail() {
  return log_builder().chunk(
      chunk_builder({record(7), record(8)}).slack(record(3)).slack(record(4)));
}

TEST(slack_pass, what_a_candidate_must_be) {
  const std::size_t third = with_tail().record_offset(0, 2);
  const std::uint64_t rest = with_tail().chunk_offset(0) + 65536 - third;
  const std::tuple<const char*, std::size_t, std::uint64_t, std::size_t, names> rows[] = {
      {"all in order", 20, 0x01da0000, 4, {"7", "8", "3s", "4s"}},
      {"no signature", 0, 0x00002a2b, 4, {"7", "8", "4s"}},
      {"a size up to the chunk's end", 4, rest, 4, {"7", "8", "3s", "4s"}},
      {"a size across it", 4, rest + 1, 4, {"7", "8", "4s"}},
      {"a size of nothing", 4, 0, 4, {"7", "8", "3s", "4s"}},
      {"no time", 16, 0, 8, {"7", "8", "3s", "4s"}},
      {"a time out of all range", 16, ~std::uint64_t{0}, 8, {"7", "8", "3s", "4s"}},
      {"a signature in the number", 8, 0x00002a2a, 8, {"7", "8", "4s"}},
      {"in the low half of it", 8, 0x500002a2a, 8, {"7", "8", "4s"}},
      {"the high half is free", 8, 0x2a2b00000005, 8, {"7", "8", "46364171960325s", "4s"}},
  };
  for (const auto& [reason, field, value, bytes, with] : rows) {
    auto log = with_tail();
    if (bytes == 4) {
      log.poke_u32(third + field, static_cast<std::uint32_t>(value));
    } else {
      log.poke_u64(third + field, value);
    }
    expect_found(log, {"7", "8"}, with, reason);
  }
}

TEST(slack_pass, which_chunks_are_searched) {
  auto declared_empty = with_tail();
  declared_empty.poke_u64(declared_empty.chunk_offset(0) + 16, ~std::uint64_t{0});
  expect_found(declared_empty, {}, {"7s", "8s", "3s", "4s"}, "one that declares no records");

  auto unsigned_chunk = log_builder()
                            .chunk({record(1)})
                            .chunk(chunk_builder({record(2)}).slack(record(3)))
                            .chunk({record(4)});
  unsigned_chunk.poke_u8(unsigned_chunk.chunk_offset(1), 'e');
  expect_found(unsigned_chunk, {"1", "4"}, {"1", "4"}, "not one without its signature");

  expect_found(four_records(), {"7", "8", "9", "10"}, {"7", "8", "9", "10"}, "an empty tail");
  expect_found(log_builder().chunk(chunk_builder({record(7), record(8)}).slack(record(8))),
               {"7", "8"}, {"7", "8", "8s"}, "what is there twice comes out twice");
}

TEST(slack_pass, later_chunks_of_the_block_know_that_a_candidate_was_tried) {
  auto log = log_builder().chunk({record(1)}).chunk(chunk_builder({record(2)}).slack(record(9)));
  log.chunk({record(3)});
  expect_found(log, {"1", "2", "3"}, {"1", "2", "9s", "3+"}, "a record was found");

  byte_vector lone_head;
  append_u32(lone_head, 0x00002a2a);
  append_zeros(lone_head, 60);
  const auto tried =
      log_builder().chunk(chunk_builder({record(1)}).free_tail(lone_head)).chunk({record(2)});
  expect_found(tried, {"1", "2"}, {"1", "2+"}, "one was tried and gave nothing");

  // The reader of the run continues with the next block in a clean state.
  exact_buffer first(chunks_of(tried));
  const auto four = four_records();
  exact_buffer second(chunks_of(four));
  const auto sink = sink_after({first.span(), second.span()});
  EXPECT_EQ(sink.found, (names{"1", "2+", "7", "8", "9", "10"}));
}

TEST(slack_pass, a_template_must_stand_within_as_many_bytes_as_are_searched) {
  // The chunk is full except for its last bytes. The record there has its own template, which is
  // thus further from the chunk's start than the tail is long: it is read without one.
  const event full{.data = {{"Bulk", slot::binary(byte_vector(30000))}}};
  const auto late = template_record(3, default_filetime(3),
                                    {"0badf00d-1111-2222-3333-444455556666",
                                     [](bxml_builder& x) {
                                       x.fragment_header();
                                       x.text_element("Note", "kept").end_of_stream();
                                     }},
                                    {slot::utf16("value")});
  const auto near = sink_after(log_builder().chunk(chunk_builder({record(7)}).slack(late)));
  EXPECT_EQ(near.found, (names{"7", "3s"}));
  EXPECT_EQ(near.plain, (std::vector<bool>{false, false}));
  const auto far = sink_after(
      log_builder().chunk(chunk_builder({record(7, full), record(8, full)}).slack(late)));
  EXPECT_EQ(far.found, (names{"7", "8", "3s"}));
  EXPECT_EQ(far.plain, (std::vector<bool>{false, false, true}));
}

TEST(slack_pass, a_value_across_the_chunks_end_is_cut_and_marked) {
  const auto late =
      template_record(3, default_filetime(3),
                      {"0badf00d-1111-2222-3333-444455556666",
                       [](bxml_builder& x) {
                         x.fragment_header();
                         x.open("Whole").close_start().normal_sub(0, 1).end_element();
                         x.open("Cut").close_start().normal_sub(1, 1).end_element().end_of_stream();
                       }},
                      {slot::utf16("whole"), slot::with_declared_size(slot::utf16("cut"), 65000)});
  const auto sink = sink_after(log_builder().chunk(chunk_builder({record(7)}).slack(late)));
  EXPECT_EQ(sink.found, (names{"7", "3s"}));
  EXPECT_EQ(sink.last_flags, (std::vector<std::uint16_t>{0, slot_cut}));
}

TEST(find_next_record, starts_from_a_sound_record_only) {
  auto log = four_records();
  const auto area = [&log](std::size_t record, std::size_t size) {
    return std::span<const std::byte>(log.bytes()).subspan(log.record_offset(0, record), size);
  };
  const std::uint64_t step = log.record_offset(0, 2) - log.record_offset(0, 1);
  EXPECT_EQ(find_next_record(area(1, 20000)), step);
  EXPECT_EQ(find_next_record(area(3, 20000)), std::nullopt) << "nothing behind it";
  EXPECT_EQ(find_next_record(area(1, step + 3)), std::nullopt) << "a signature across the end";
  EXPECT_EQ(find_next_record(area(1, 15)), std::nullopt);
  EXPECT_EQ(find_next_record({}), std::nullopt);
  log.poke_u32(log.record_offset(0, 1) + 4, 9);
  EXPECT_EQ(find_next_record(area(1, 20000)), std::nullopt) << "its own size is none";
}

}  // namespace
}  // namespace zanvik::testing
