// Slots with a text in the place of their value, as the commands that come after see them.
#include "reports/translated_slots.h"

#include <gtest/gtest.h>

#include <map>
#include <string>
#include <vector>

#include "log_builder.h"
#include "reports/evtx_selector.h"

namespace zanvik::testing {
namespace {

constexpr translate_spec as_time{translate_kind::tf, 0, 1, true};
constexpr translate_spec as_layout{translate_kind::vtbl, 0, 1, true};

slot_value time_bytes(int day) {
  byte_vector bytes;
  append_u64(bytes, filetime(2024, 3, day));
  return slot::binary(bytes);
}

event with(std::vector<data_field> data) {
  event content;
  content.data = std::move(data);
  return content;
}

// The records' columns, and under "name" the index of the command that took it.
std::vector<std::map<std::string, std::string>> selected(
    const std::vector<event>& events, const std::vector<ReportCommand>& commands) {
  record_container records;
  plan_cache plans;
  evtx_selector selector(commands, records, plans);
  const output_format format;
  record_reader reader(format);
  chunk_builder chunk;
  std::uint64_t number = 0;
  for (const event& each : events) chunk.add(record(++number, each));
  byte_vector bytes = log_builder().chunk(chunk).bytes();
  walk_evtx_block(bytes, 0, reader, selector, {});
  std::vector<std::map<std::string, std::string>> list;
  for (const LogRecord* kept : records.in_time_order()) {
    auto& columns = list.emplace_back();
    columns["command"] = std::to_string(kept->report_entry_id);
    cell_reader cells(kept->values);
    for (const shape_column& column : kept->shape->columns) {
      columns[column.name] = column.literal ? column.text : std::string(cells.next().text);
    }
  }
  return list;
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

// The first command looks at the bytes, makes a text of them and then has no column.
TEST(translated_slots, later_commands_see_the_text) {
  const std::vector<event> events(
      2, with({{"Seen", time_bytes(9)}, {"T", slot::binary(byte_vector(48))}}));
  const translate_specs both = {{"Seen", as_time}, {"T", as_layout}};
  const auto first = command(0, {"T|00 00"}, "00 00 00", {"nosuch"}, both);
  const std::vector<std::vector<ReportCommand>> seconds = {
      {first, command(1, {"T|00 00"}, "", {"T"}, {}), command(2, {"T|{unk}"}, "", {"Seen"}, {})},
      {first, command(1, {}, "00 00 00", {"T"}, {}), command(2, {}, "2024/03/09", {"Seen"}, {})}};
  for (const auto& commands : seconds) {
    const auto list = selected(events, commands);
    ASSERT_EQ(list.size(), 2u);
    for (auto columns : list) {
      EXPECT_EQ(columns["command"], "2");
      EXPECT_EQ(columns["Seen"], "2024/03/09 00:00:00.000000000");
    }
  }
}

// As many as there are names, and a text that tells of a failure is not counted.
TEST(translated_slots, as_many_as_names) {
  const slot_value empty_layout = slot::binary(byte_vector(48));
  const std::vector<event> events = {
      with({{"A", time_bytes(1)}, {"A", time_bytes(2)}, {"B", time_bytes(3)}}),
      with({{"T", empty_layout}, {"T", empty_layout}, {"A", time_bytes(1)}, {"A", time_bytes(2)}})};
  ReportCommand times = command(0, {}, "", {}, {{"A", as_time}, {"B", as_time}});
  times.all_data = true;
  ReportCommand mixed = command(0, {}, "", {}, {{"A", as_time}, {"T", as_layout}});
  mixed.all_data = true;
  auto first = selected(events, {times}).front();
  EXPECT_EQ(first["01:A"], "2024/03/01 00:00:00.000000000");
  EXPECT_EQ(first["02:A"], "2024/03/02 00:00:00.000000000");
  EXPECT_EQ(first["03:B"].find('/'), std::string::npos);
  auto second = selected(events, {mixed}).back();
  EXPECT_EQ(second["01:T"], "part_tbl {unk}");
  EXPECT_EQ(second["02:T"], "part_tbl {unk}");
  EXPECT_EQ(second["04:A"], "2024/03/02 00:00:00.000000000");
}

}  // namespace
}  // namespace zanvik::testing
