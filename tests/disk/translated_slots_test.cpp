// Slots with a text instead of their value, as later commands see them.
#include "disk/translated_slots.h"

#include "kept_records.h"

namespace zanvik::testing {
namespace {

constexpr translate_spec as_time{translate_kind::tf, 0, 1, true};
constexpr translate_spec as_layout{translate_kind::vtbl, 0, 1, true};

slot_value time_bytes(int day) {
  byte_vector bytes;
  append_u64(bytes, filetime(2024, 3, day));
  return slot::binary(bytes);
}

// "command: columns" of each record, a line each; those of the system part are left out.
std::string selected(const std::vector<std::vector<data_field>>& events,
                     const std::vector<ReportCommand>& commands) {
  chunk_builder chunk;
  std::uint64_t number = 0;
  for (const auto& data : events) chunk.add(record(++number, {.data = data}));
  const kept_records kept(log_builder().chunk(chunk).bytes(), commands);
  std::string text;
  for (const LogRecord* found : kept.records) {
    const std::string columns = columns_text(*found);
    text += std::to_string(found->report_entry_id) + ": ";
    text += columns.substr(0, columns.find("; Channel=")) + "\n";
  }
  return text;
}

ReportCommand command(std::int32_t index, std::vector<std::string> conditions, std::string search,
                      std::vector<std::string> pull, translate_specs translators) {
  ReportCommand made;
  made.index = index;
  made.conditions = std::move(conditions);
  made.string_exists = std::move(search);
  made.pull = std::move(pull);
  made.translators = std::move(translators);
  return made;
}

// The first command tests the bytes, makes a text of them and then has no column.
TEST(translated_slots, later_commands_see_the_text) {
  const std::vector<data_field> event{{"Seen", time_bytes(9)},
                                      {"T", slot::binary(byte_vector(48))}};
  const translate_specs both = {{"Seen", as_time}, {"T", as_layout}};
  const auto first = command(0, {"T|00 00"}, "00 00 00", {"nosuch"}, both);
  const std::vector<ReportCommand> seconds[] = {
      {first, command(1, {"T|00 00"}, "", {"T"}, {}), command(2, {"T|{unk}"}, "", {"Seen"}, {})},
      {first, command(1, {}, "00 00 00", {"T"}, {}), command(2, {}, "2024/03/09", {"Seen"}, {})}};
  const std::string line = "2: Seen=2024/03/09 00:00:00.000000000\n";
  for (const auto& commands : seconds) EXPECT_EQ(selected({event, event}, commands), line + line);
}

// As many as there are names; a text that reports a failure does not count.
TEST(translated_slots, as_many_as_names) {
  const slot_value none = slot::binary(byte_vector(48));
  ReportCommand times = command(0, {}, "", {}, {{"A", as_time}, {"B", as_time}});
  times.all_data = true;
  const std::string march = "=2024/03/0";
  const std::string midnight = " 00:00:00.000000000; ";
  const auto first =
      selected({{{"A", time_bytes(1)}, {"A", time_bytes(2)}, {"B", time_bytes(3)}}}, {times});
  EXPECT_TRUE(first.starts_with("0: 01:A" + march + "1" + midnight + "02:A" + march + "2" +
                                midnight + "03:B="));
  EXPECT_EQ(first.find('/', first.find("03:B=")), std::string::npos);
  ReportCommand mixed = command(0, {}, "", {}, {{"A", as_time}, {"T", as_layout}});
  mixed.all_data = true;
  EXPECT_EQ(
      selected({{{"T", none}, {"T", none}, {"A", time_bytes(1)}, {"A", time_bytes(2)}}}, {mixed}),
      "0: 01:T=part_tbl {unk}; 02:T=part_tbl {unk}; 03:A" + march + "1" + midnight + "04:A" +
          march + "2 00:00:00.000000000\n");
}

}  // namespace
}  // namespace zanvik::testing
