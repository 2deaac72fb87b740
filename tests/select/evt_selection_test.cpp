// What a command does with a legacy record: whether it selects it, and which columns it keeps.
#include "events/evt_fields.h"
#include "evt_builder.h"
#include "kept_records.h"
#include "select/evt_selector.h"

namespace zanvik::testing {
namespace {

const evt_record_fields logon{.record_num = 5,
                              .time_generated = unix_seconds(2012, 3, 1, 10),
                              .event_id = 0x40000210,
                              .event_type = 12,
                              .source = "Security",
                              .computer = "PC",
                              .sid = "S-1-5-21-7",
                              .strings = {"alice", "DOM", "Win", "logon.exe"}};

// The records that commands keep of a legacy log, by ascending time.
struct kept_evt_records {
  kept_evt_records(std::span<const std::byte> log, const std::vector<ReportCommand>& commands) {
    plan_cache plans;
    keeping_sink keeping(commands, container, plans);
    evt_selector selector(commands, keeping);
    walk_evt_log(log, selector);
    const auto found = container.in_time_order();
    records.assign(found.begin(), found.end());
  }
  record_container container;
  std::vector<const LogRecord*> records;
};

// The columns of the only record of a log.
std::string kept(const ReportCommand& command, const evt_record_fields& fields) {
  const kept_evt_records found(evt_builder().add(fields).bytes(), {command});
  return found.records.size() == 1 ? columns_text(*found.records[0]) : "none";
}

std::string pulled(std::vector<std::string> names, const evt_record_fields& fields = logon) {
  ReportCommand command;
  command.pull = std::move(names);
  return kept(command, fields);
}

TEST(evt_columns, all_data_in_order_of_names) {
  EXPECT_EQ(kept(listing(), logon),
            "computer name=PC; param_01=alice; param_02=DOM; param_03=Win; param_04=logon.exe; "
            "source name=Security; user sid=S-1-5-21-7");
  evt_record_fields many{.source = "S", .computer = "C"};
  for (int i = 1; i <= 101; ++i) many.strings.push_back(std::to_string(i));
  const std::string found = kept(listing(), many);
  EXPECT_NE(found.find("param_10=10; param_100=100; param_101=101; param_11=11"), found.npos);
  EXPECT_TRUE(found.ends_with("; source name=S")) << "and no SID";
}

TEST(evt_columns, values_are_cleaned) {
  const std::string long_text(70, 'x');  // its head takes two bytes
  EXPECT_EQ(kept(listing(), {.source = "a|b",
                             .computer = "\t\r\n",
                             .strings = {"1\r\n2\n\t3\r", "", ",", "é\n" + long_text}}),
            "computer name=,; param_01=1,2,3; param_02=; param_03=,; param_04=é," + long_text +
                "; source name=a|b");
}

TEST(evt_columns, pulled_by_place_and_number) {
  const std::tuple<const char*, std::vector<std::string>, const char*> rows[] = {
      {"nothing asked for", {}, ""},
      {"a single name is never known", {"source name"}, "source name=-"},
      {"three in their order",
       {"source name", "computer name", "user sid"},
       "computer name=PC; source name=Security; user sid=S-1-5-21-7"},
      {"the computer may come first, the SID not in a list of two",
       {"computer name", "user sid"},
       "computer name=PC; user sid=-"},
      {"out of order",
       {"computer name", "source name", "x_1"},
       "computer name=PC; source name=-; x_1=alice"},
      {"the last string has no number",
       {"param_03", "param_04", "param_0", "param_5"},
       "param_0=-; param_03=Win; param_04=-; param_5=-"},
      {"the first _ counts, what is no number is none",
       {"a_2_3", "user_sid", "1|User_2"},
       "1|User_2=DOM; a_2_3=DOM; user_sid=-"},
      {"without a _", {"1|UserName", "2"}, "1|UserName=-; 2=-"},
  };
  for (const auto& [reason, names, expected] : rows) EXPECT_EQ(pulled(names), expected) << reason;
  EXPECT_EQ(pulled({"user sid", "b", "c"}, {}), "b=-; c=-; user sid=");
}

TEST(evt_selection, conditions) {
  const std::tuple<const char*, bool, const char*> rows[] = {
      {"source_name|CURI", true, "any case"},
      {"Source_Name|sec", true, "of the name too"},
      {"source name|sec", false, "a column's name is no field"},
      {"user_sid|21-7", true, ""},
      {"success_type|1", true, "a part of 12"},
      {"success_type|3", false, ""},
      {"string|domwin", true, "across strings"},
      {"string|dom, win", false, "nothing between them"},
      {"string|", true, "not empty"},
      {"1|ALICE", true, ""},
      {"4|logon", true, "the last one counts here"},
      {"0x4", true, "there is one"},
      {"5", false, "there is none"},
      {"0", false, ""},
      {"nosuch", false, ""},
      {"1|ali|ce", false, "only the first bar parts"},
  };
  const byte_vector log = evt_record_bytes(logon);
  evt_record record;
  parse_evt_record(byte_cursor(log), 0, record);
  std::string scratch;
  for (const auto& [term, holds, reason] : rows) {
    EXPECT_EQ(evt_term_matches(record, term, scratch), holds) << term << ": " << reason;
  }
}

TEST(evt_selection, texts) {
  std::string scratch;
  const auto found = [&](const evt_record_fields& fields, const char* needle) {
    const byte_vector log = evt_record_bytes(fields);
    evt_record record;
    parse_evt_record(byte_cursor(log), 0, record);
    return evt_record_contains(record, needle, scratch);
  };
  for (const char* needle : {"21-7", "SECURITY", "pc", "dom", "(S-1-5-21-7)"}) {
    EXPECT_TRUE(found(logon, needle)) << needle;  // the last one holds the SID
  }
  for (const char* needle : {"domwin", "nosuch"}) EXPECT_FALSE(found(logon, needle)) << needle;
  EXPECT_TRUE(found({}, "nosuch"));  // as it holds a SID that is not there
}

TEST(evt_selection, number_and_time) {
  const std::uint64_t time = filetime(2012, 3, 1, 10);
  const std::tuple<std::uint64_t, std::uint64_t, std::uint64_t, bool, const char*> rows[] = {
      {528, 0, any_event_id, true, "low word of the number"},
      {0x40000210, 0, any_event_id, false, "with the qualifiers it is another one"},
      {0x100000210, 0, any_event_id, false, ""},
      {0, 0, any_event_id, false, "0 is not any"},
      {any_event_id, time, time, true, "both ends count"},
      {any_event_id, time + 1, any_event_id, false, ""},
      {any_event_id, 0, time - 1, false, ""},
      {any_event_id, 0, 0, true, "a stop time of 0 is none"},
  };
  for (const auto& [event_id, start, stop, selected, reason] : rows) {
    ReportCommand command = listing();
    command.event_id = event_id;
    command.start_time = start;
    command.stop_time = stop;
    EXPECT_EQ(kept(command, logon) != "none", selected) << event_id << reason;
  }
}

TEST(evt_selection, the_level_is_one_more_condition) {
  for (const bool holds : {true, false}) {
    ReportCommand command = listing();
    command.level_condition = holds ? "success_type|12" : "success_type|4";
    EXPECT_EQ(kept(command, logon) != "none", holds);
  }
}

TEST(evt_selection, first_command_takes_the_record) {
  ReportCommand by_id;
  by_id.index = 1;
  by_id.event_id = 528;
  by_id.name = "logons";
  by_id.conditions = {"1|alice", "2|dom"};
  by_id.level_condition = "success_type|12";
  ReportCommand rest = listing();
  rest.index = 2;
  evt_record_fields other = logon;
  other.record_num = 6;
  other.strings[1] = "X";
  other.time_generated -= 60;
  const kept_evt_records kept(evt_builder().add(logon).add(other).cursor().bytes(), {by_id, rest});
  ASSERT_EQ(kept.records.size(), 2u);
  EXPECT_EQ(kept.records[0]->report_entry_id, 2);
  EXPECT_EQ(kept.records[0]->record_number, 6u);
  const LogRecord& first = *kept.records[1];
  EXPECT_EQ(first.report_entry_id, 1);
  EXPECT_EQ(first.event_id, 528u);
  EXPECT_EQ(first.level, 12u);
  EXPECT_EQ(first.time, filetime(2012, 3, 1, 10));
  EXPECT_EQ(first.flags, record_inside_range);
  EXPECT_EQ(first.file_offset, 0u);
  EXPECT_FALSE(first.is_evtx);
  EXPECT_EQ(*first.provider + *first.description, "logons");
  EXPECT_EQ(columns_text(first), "");
}

// Records with equal counts share a shape, which is made again after the container is reset.
TEST(evt_selection, shapes_are_shared) {
  record_container records;
  const std::vector<ReportCommand> commands{listing()};
  plan_cache plans;
  keeping_sink keeping(commands, records, plans);
  evt_selector selector(commands, keeping);
  const auto log = evt_builder().add({.strings = {"a"}}).add({}).add({.strings = {"b"}});
  for (int round = 0; round < 2; ++round) {
    walk_evt_log(log.bytes(), selector);
    const auto found = records.in_time_order();
    ASSERT_EQ(found.size(), 3u);
    EXPECT_EQ(found[0]->shape, found[2]->shape);
    EXPECT_NE(found[0]->shape, found[1]->shape);
    EXPECT_NE(columns_text(*found[2]).find("; param_01=b; "), std::string::npos);
    records.clear();
  }
}

// Every number of strings makes its own layout, and zeros are as many empty strings as one likes:
// half a million columns for a log of 2 MB, of which half must be enough.
TEST(evt_selection, crafted_layouts_are_bounded) {
  evt_builder log;
  const byte_vector zeros(2200);
  for (int i = 0; i < 1000; ++i) {
    log.add({.data = zeros, .num_strings = static_cast<std::uint16_t>(i < 999 ? i : 0xffff)});
  }
  const kept_evt_records kept(log.bytes(), {listing()});
  const auto& found = kept.records;
  ASSERT_EQ(found.size(), 1000u);
  std::size_t shown = 0;
  for (const LogRecord* record : found) shown += record->shape->columns.size();
  EXPECT_EQ(found[256]->shape->columns.size(), 258u);
  EXPECT_LT(found[999]->shape->columns.size(), 2000u);
  EXPECT_LT(shown, 300000u);
}

TEST(evt_sweep, every_changed_byte_through_selection) {
  evt_builder whole;
  whole.add(logon).cursor().add(logon);
  ReportCommand pull;
  pull.pull = {"source name", "computer name", "user sid", "param_2"};
  pull.conditions = {"string|alice", "user_sid|s-1", "3"};
  pull.string_exists = "logon";
  const std::vector<ReportCommand> commands{pull, listing()};
  for (std::size_t at = 0; at < whole.size(); ++at) {
    for (const int flip : {0x01, 0x80, 0xff}) {
      byte_vector bytes(whole.bytes());
      bytes[at] ^= static_cast<std::byte>(flip);
      const kept_evt_records kept(bytes, commands);
      EXPECT_LE(kept.records.size(), 2u);
      for (const LogRecord* record : kept.records) (void)columns_text(*record);
    }
  }
}

}  // namespace
}  // namespace zanvik::testing
