// One record: which of its parts are read, and how far.
#include <gtest/gtest.h>

#include "collected_records.h"

namespace zanvik::testing {
namespace {

using strings = std::vector<std::string>;

TEST(evt_record, head_names_sid_strings_and_data) {
  const auto record = collected({.record_num = 7,
                                 .time_generated = unix_seconds(2011, 10, 26, 7, 48),
                                 .event_id = 0xc0001234,
                                 .event_type = 2,
                                 .source = "Süd",
                                 .computer = "PC-1",
                                 .sid = "S-1-5-21-1-4294967295-3-500",
                                 .strings = {"one", "", "\U0001f600"},
                                 .data = bytes_of("12345")});
  EXPECT_EQ(record.head.record_num, 7u);
  EXPECT_EQ(record.head.time, filetime(2011, 10, 26, 7, 48));
  EXPECT_EQ(record.head.short_event_id(), 0x1234);
  EXPECT_EQ(record.head.event_type, 2);
  EXPECT_EQ(record.head.file_offset, 48u);
  EXPECT_EQ(record.source, "Süd");
  EXPECT_EQ(record.computer, "PC-1");
  EXPECT_EQ(record.sid, "S-1-5-21-1-4294967295-3-500");
  EXPECT_EQ(record.strings, (strings{"one", "", "\U0001f600"}));
  EXPECT_EQ(record.data_bytes, 5u);
  EXPECT_EQ(collected({.time_generated = 0}).head.time, 0u);
  EXPECT_EQ(collected({.time_generated = 0xffffffff}).head.time, filetime(2106, 2, 7, 6, 28, 15));
}

// Heads have 56 bytes, "S" and "C" with their ends 8: the SID is at 64, strings at 64 or 76, and
// their end gives the size.
TEST(evt_record, what_fails_its_bounds_costs_itself_alone) {
  const evt_record_fields sound{
      .source = "S", .computer = "C", .sid = "S-1-5-18", .strings = {"x"}};
  const auto with = [&](auto change) {
    evt_record_fields fields = sound;
    change(fields);
    return fields;
  };
  // `expected`: source, computer, SID, strings
  const std::tuple<const char*, evt_record_fields, strings> rows[] = {
      {"sound", sound, {"S", "C", "S-1-5-18", "x"}},
      {"data at the head's end: no names",
       with([](auto& f) { f.data_offset = 56; }),
       {"", "", "S-1-5-18", "x"}},
      {"data one byte behind it: names",
       with([](auto& f) { f.data_offset = 57; }),
       {"S", "C", "S-1-5-18", "x"}},
      {"SID leads out by a byte",
       with([](auto& f) { f.sid_offset = 84 - 12 + 1; }),
       {"S", "C", "", "x"}},
      {"SID sum wraps 32 bits",
       with([](auto& f) { f.sid_offset = 0xfffffff8; }),
       {"S", "C", "", "x"}},
      {"strings begin at the size",
       with([](auto& f) { f.string_offset = 84; }),
       {"S", "C", "S-1-5-18"}},
      {"strings begin a byte before it: no unit, but a string",
       with([](auto& f) { f.string_offset = 83; }),
       {"S", "C", "S-1-5-18", ""}},
      {"string offset far out",
       with([](auto& f) { f.string_offset = 0xffffffff; }),
       {"S", "C", "S-1-5-18"}},
      {"no strings by the head", with([](auto& f) { f.num_strings = 0; }), {"S", "C", "S-1-5-18"}},
  };
  for (const auto& [reason, fields, expected] : rows) {
    const auto record = collected(fields);
    ASSERT_EQ(record.head.record_size, 84u) << reason;
    strings found{record.source, record.computer, record.sid};
    found.insert(found.end(), record.strings.begin(), record.strings.end());
    EXPECT_EQ(found, expected) << reason;
  }
}

// 512 units are a length, 513 are not: the next string is then read from the second unit on.
TEST(evt_record, long_strings_move_on_by_one_unit) {
  const auto letters = [](std::size_t count) { return std::string(count, 'a'); };
  EXPECT_EQ(collected({.strings = {letters(512), "b"}}).strings, (strings{letters(512), "b"}));
  EXPECT_EQ(collected({.strings = {letters(513), "b"}}).strings,
            (strings{letters(513), letters(512)}));
  EXPECT_EQ(collected({.strings = {letters(600), "b", "c"}}).strings,
            (strings{letters(600), letters(599), letters(598)}));
}

// Zero units are not subtracted from the rest, so each string read leaves it 2 bytes too large.
TEST(evt_record, strings_are_read_beyond_the_record) {
  // 12 bytes stand at "ab", and 8 remain at the repeated length, 76: "L".
  const auto one_more =
      collected({.source = "S", .computer = "C", .strings = {"ab", ""}, .num_strings = 3});
  EXPECT_EQ(one_more.head.record_size, 76u);
  EXPECT_EQ(one_more.strings, (strings{"ab", "", "L"}));
  // At the end of the file there are zero units, until nothing remains.
  const auto many =
      collected({.source = "S", .computer = "C", .strings = {"ab"}, .num_strings = 9});
  EXPECT_EQ(many.strings.size(), 9u);
  EXPECT_EQ(many.strings.back(), "");
  // 20 bytes from the string on: 8 remain after it, 4 when the lengths of both records (84: "T")
  // are read, which are two units of the next one's signature.
  const evt_record_fields greedy{
      .source = "S", .computer = "C", .strings = {"abcdef"}, .num_strings = 9};
  const collected_log two(evt_builder().add(greedy).add(greedy).bytes());
  EXPECT_EQ(two.records.at(0).head.record_size, 84u);
  EXPECT_EQ(two.records.at(0).strings,
            (strings{"abcdef", "", "T", "T", "\xe6\x99\x8c\xe6\x95\x8c"}));
}

TEST(evt_record, names_have_limits) {
  const std::string long_name(520, 'n');
  // Without a length of its own the source moves by one unit; the computer is 500 units of it.
  const auto record = collected({.source = long_name, .computer = "C"});
  EXPECT_EQ(record.source, long_name);
  EXPECT_EQ(record.computer, std::string(500, 'n'));
  // A size of 58 leaves one unit for the source, but not for its length.
  const auto small = collected({.source = "SRC", .computer = "PC", .record_size = 58});
  EXPECT_EQ(small.source, "S");
  EXPECT_EQ(small.computer, "PC");
}

TEST(evt_record, lone_surrogates_stand_for_themselves) {
  auto log = evt_builder().add({.source = "ab", .computer = "C"});
  log.poke_bytes(48 + 56, bytes_of({0x00, 0xd8}));
  EXPECT_EQ(collected_log(log.bytes()).records.at(0).source,
            "\xed\xa0\x80"
            "b");
}

TEST(sid_text, needs_its_bytes) {
  const std::tuple<const char*, byte_vector, const char*> rows[] = {
      {"none", {}, ""},
      {"11 bytes", bytes_of({1, 0, 0, 0, 0, 0, 0, 5, 1, 2, 3}), ""},
      {"12 bytes", bytes_of({1, 1, 0, 0, 0, 0, 0, 5, 18, 0, 0, 0}), "S-1-5-18"},
      {"no sub-authority of the one there", bytes_of({1, 0, 0, 0, 0, 0, 0, 5, 1, 0, 0, 0}),
       "S-1-5"},
      {"two counted, one there", bytes_of({1, 2, 0, 0, 0, 0, 0, 5, 18, 0, 0, 0}), ""},
      {"authority's last byte alone", bytes_of({2, 1, 9, 9, 9, 9, 9, 16, 0, 1, 0, 1}),
       "S-2-16-16777472"},
  };
  for (const auto& [reason, bytes, expected] : rows) {
    std::string text = "before";
    sid_to_text(text, bytes);
    EXPECT_EQ(text, expected) << reason;
  }
}

}  // namespace
}  // namespace zanvik::testing
