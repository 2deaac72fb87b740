// From decoded .evtx records to selected ones: look-ups, selection, columns.
#include <gtest/gtest.h>

#include <map>

#include "log_builder.h"
#include "reports/evtx_fields.h"
#include "reports/evtx_selector.h"

namespace zanvik::testing {
namespace {

using cells = std::map<std::string, std::string>;

// A kept record with its columns in one map; an unmarked cell must hold nothing that needs care.
struct kept_record {
  LogRecord head;
  std::string provider;
  std::string description;
  cells columns;
};

ReportCommand listing() {
  ReportCommand command;
  command.all_data = true;
  return command;
}

std::vector<kept_record> select(const log_builder& log, std::vector<ReportCommand> commands) {
  record_container records;
  plan_cache plans;
  evtx_selector selector(commands, records, plans);
  const output_format format;
  record_reader reader(format);
  byte_vector bytes = log.bytes();
  walk_evtx_block(bytes, 0, reader, selector, {});
  std::vector<kept_record> kept;
  for (const LogRecord* record : records.in_time_order()) {
    kept_record& one =
        kept.emplace_back(kept_record{*record, *record->provider, *record->description, {}});
    cell_reader values(record->values);
    for (const shape_column& column : record->shape->columns) {
      value_cell cell{column.text, true};
      if (!column.literal) cell = values.next();
      EXPECT_TRUE(cell.marked || cell.text.find_first_of(",|\r\n") == std::string_view::npos);
      one.columns.emplace(column.name, cell.text);
    }
  }
  return kept;
}

std::vector<std::uint64_t> numbers(const std::vector<kept_record>& records) {
  std::vector<std::uint64_t> result;
  for (const kept_record& record : records) result.push_back(record.head.record_number);
  return result;
}

const event logon{.event_id = 4624,
                  .provider = "Fabrikam-Logon",
                  .level = 2,
                  .computer = "WS7",
                  .user_sid = "S-1-5-18",
                  .data = {{"LogonType", slot::uint32(3)}, {"Path", slot::utf16("\na\r\n\tb,c")}}};

// Templates that give their slots the same names, of which one has two of them nested.
TEST(all_data, a_nested_value_is_not_taken_for_an_own_one_of_its_name) {
  const auto naming = [](std::uint16_t first_slot) {
    return [first_slot](bxml_builder& b) {
      b.fragment_header();
      b.open("A").close_start().normal_sub(first_slot, 1).end_element();
      b.open("B").close_start().normal_sub(first_slot + 1, 1).end_element().end_of_stream();
    };
  };
  const auto empty = [](bxml_builder& b) { b.fragment_header().end_of_stream(); };
  const std::vector<slot_value> two{slot::utf16("1"), slot::utf16("2")};
  const template_definition inner{"11111111-2222-3333-4455-667788990011", naming(0)};
  const template_definition outer{"21111111-2222-3333-4455-667788990011", empty};
  const template_definition flat{"31111111-2222-3333-4455-667788990011", naming(1)};
  const auto nested = slot::bxml([=](bxml_builder& b) { b.template_instance(inner, two); });
  const auto kept =
      select(log_builder().chunk(
                 {template_record(1, 133000000000000000, outer, {nested}),
                  template_record(2, 133000000000000000, flat, {slot::null(), two[0], two[1]})}),
             {listing()});
  ASSERT_EQ(kept.size(), 2u);
  EXPECT_EQ(kept[0].columns, (cells{{"01:A", "1"}, {"02:B", "2"}}));
  EXPECT_EQ(kept[1].columns, (cells{{"A", "1"}, {"B", "2"}}));
}

TEST(all_data, columns_are_slots_and_fields_by_their_names) {
  const auto log = log_builder().chunk({record(7, logon)});
  const cells expected{{"01:LogonType", "3"},
                       {"02:Path", "a:b,c"},  // line feeds become ":", one leading ":" goes
                       {"Channel", "Application"},
                       {"Computer", "WS7"},
                       {"Correlation ActivityID", "0"},
                       {"Correlation RelatedActivityID", "0"},
                       {"Event xmlns", "http://schemas.microsoft.com/win/2004/08/events/event"},
                       {"EventID Qualifiers", "0"},
                       {"EventRecordID", "7"},
                       {"Execution ProcessID", "612"},
                       {"Execution ThreadID", "4"},
                       {"Keywords", "0x8000000000000000"},
                       {"Level", "2"},
                       {"Opcode", "0"},
                       {"Provider Guid", "0"},
                       {"Security UserID", "S-1-5-18"},
                       {"Task", "0"},
                       {"TimeCreated SystemTime", "2024-01-15 08:00:07.000000000"},
                       {"Version", "0"}};
  const auto kept = select(log, {listing()});
  ASSERT_EQ(kept.size(), 1u);
  EXPECT_EQ(kept[0].columns, expected);
  EXPECT_EQ(kept[0].provider, "Fabrikam-Logon");
  EXPECT_EQ(kept[0].head.event_id, 4624u);
  EXPECT_EQ(kept[0].head.level, 2u);
  EXPECT_EQ(kept[0].head.time, default_filetime(7));
  EXPECT_EQ(kept[0].head.flags, record_inside_range);
  EXPECT_EQ(kept[0].head.file_offset, log.record_offset(0, 0));

  ReportCommand with_system = listing();
  with_system.skip_system_fields = false;
  cells all = expected;
  all.emplace("EventID", "4624");
  EXPECT_EQ(select(log, {with_system}).at(0).columns, all);
}

// Templates with one element a slot, so that any names can be given.
template_definition named_slots(const char* guid, std::vector<std::string> names,
                                const bxml_writer& before = {}) {
  return {guid, [=](bxml_builder& x) {
            x.fragment_header();
            if (before) before(x);
            for (std::uint16_t i = 0; i < names.size(); ++i) {
              x.open(names[i]).close_start().normal_sub(i, 1).end_element();
            }
            x.end_of_stream();
          }};
}
constexpr const char* guid_a = "aaaaaaaa-0000-0000-0000-00000000000a";
constexpr const char* guid_b = "bbbbbbbb-0000-0000-0000-00000000000b";

kept_record only_record(const template_definition& definition,
                        const std::vector<slot_value>& slots) {
  auto kept = select(log_builder().chunk({template_record(7, 9, definition, slots)}), {listing()});
  EXPECT_EQ(kept.size(), 1u);
  kept.resize(1);
  return kept[0];
}

TEST(all_data, names_that_are_not_plain_columns) {
  const bxml_writer literal_provider = [](bxml_builder& x) {
    x.open_with_attributes("Provider").attribute("Name").value("Literal").close_empty();
  };
  const struct {
    const char* reason;
    std::vector<std::string> names;
    std::vector<slot_value> slots;
    bxml_writer before;
    std::string provider;
    cells columns;
  } rows[] = {
      {"the first of each goes, what comes again stays, and the record's own number stays",
       {"EventID", "EventID", "SystemTime", "EventRecordID"},
       {slot::uint8(1), slot::uint8(2), slot::uint8(3), slot::uint8(4)},
       {},
       "",
       {{"EventID", "2"}, {"EventRecordID", "4"}}},
      {"provider from a slot",
       {"Provider Name", "A"},
       {slot::utf16("P"), slot::utf16("x")},
       {},
       "P",
       {{"A", "x"}}},
      {"provider from a literal; a slot of that name is a column then",
       {"Provider Name", "A"},
       {slot::utf16("P"), slot::utf16("x")},
       literal_provider,
       "Literal",
       {{"A", "x"}, {"Provider Name", "P"}}},
      {"an empty provider leaves the next one a chance",
       {"Provider Name", "Provider Name"},
       {slot::utf16(""), slot::utf16("Q")},
       {},
       "Q",
       {}},
      {"a full one does not",
       {"Provider Name", "Provider Name"},
       {slot::utf16("P"), slot::utf16("Q")},
       {},
       "P",
       {{"Provider Name", "Q"}}},
      {"a lone line feed is stored as a colon, a lone comma as nothing",
       {"A", "B", "C"},
       {slot::utf16("\n\n"), slot::utf16(","), slot::utf16("\n")},
       {},
       "",
       {{"A", ":"}, {"B", ""}, {"C", ""}}},
      {"a binary value's runs, each with a blank",
       {"A"},
       {slot::binary(slot::utf16("Disk").bytes)},
       {},
       "",
       {{"A", "Disk "}}},
      {"an empty binary value of a slot of its own",
       {"A"},
       {slot::binary({})},
       {},
       "",
       {{"A", ""}}},
      {"a slot without a name is no column",
       {"A"},
       {slot::utf16("x"), slot::utf16("y")},
       {},
       "",
       {{"A", "x"}}},
  };
  for (const auto& row : rows) {
    const kept_record kept = only_record(named_slots(guid_a, row.names, row.before), row.slots);
    EXPECT_EQ(kept.provider, row.provider) << row.reason;
    EXPECT_EQ(kept.columns, row.columns) << row.reason;
  }
}

TEST(all_data, nested_values_have_numbers) {
  std::vector<slot_value> values{slot::utf16("x"), slot::binary({}), slot::utf16(""),
                                 slot::binary(bytes_of({1, 2}))};
  for (int i = 4; i < 12; ++i) values.push_back(slot::uint8(static_cast<std::uint8_t>(i)));
  const auto nested = slot::bxml([values](bxml_builder& x) {
    x.template_instance(named_slots(guid_b, {"A", "B", "C"}), values);
  });
  const kept_record kept = only_record(named_slots(guid_a, {"Own"}), {slot::utf16("o"), nested});
  EXPECT_EQ(kept.columns, (cells{{"01:A", "x"},
                                 {"02:B", "[null]"},
                                 {"03:C", ""},
                                 {"04:<unnamed>", "01 02"},
                                 {"05:<unnamed>", "4"},
                                 {"06:<unnamed>", "5"},
                                 {"07:<unnamed>", "6"},
                                 {"08:<unnamed>", "7"},
                                 {"09:<unnamed>", "8"},
                                 {"10:<unnamed>", "9"},
                                 {"11:<unnamed>", "10"},
                                 {"12:<unnamed>", "11"},
                                 {"Own", "o"}}));
  const auto plain = slot::bxml([](bxml_builder& x) {
    x.fragment_header().open("A").close_start().value("b\nc").end_element().end_of_stream();
  });
  EXPECT_EQ(only_record(named_slots(guid_a, {"Own"}), {slot::utf16("o"), plain}).columns,
            (cells{{"Own", "o"}, {"UserData", "<A>\"bc\"</A>"}}));
}

bxml_writer plain_event(const char* time) {
  return [time](bxml_builder& x) {
    x.fragment_header().open("Event").close_start().text_element("EventID", "41");
    x.open_with_attributes("TimeCreated").attribute("SystemTime").value(time).close_empty();
    x.text_element("Level", "3").open("EventData").close_start().text_element("Data", "a");
    x.text_element("Data", "b").end_element().end_element().end_of_stream();
  };
}

TEST(plain_records, have_a_time_of_their_own_and_the_collector_s) {
  const auto written = filetime(2024, 5, 6, 7, 8, 9, 1234567);
  const auto log =
      log_builder().chunk({plain_record(1, written, plain_event("2023-04-05T06:07:08.5Z")),
                           plain_record(2, written, plain_event("never")),
                           raw_record(3, written, bytes_of({7, 7, 7, 7, 7, 7}))});
  const auto kept = select(log, {listing()});
  ASSERT_EQ(numbers(kept), (std::vector<std::uint64_t>{1, 2}));
  EXPECT_EQ(kept[0].head.time, filetime(2023, 4, 5, 6, 7, 8, 5000000));
  EXPECT_EQ(kept[1].head.time, written);
  EXPECT_EQ(kept[0].columns, (cells{{"01:Data", "a; b"},
                                    {"Level", "3"},
                                    {"TimeCreated (Collector) UTC", "2024-05-06 07:08:09.123"},
                                    {"TimeCreated SystemTime", "2023-04-05T06:07:08.5Z"}}));
  EXPECT_FALSE(kept[1].columns.contains("TimeCreated (Collector) UTC"));
  for (const kept_record& record : kept) {
    EXPECT_EQ(record.head.flags, record_inside_range | record_plain_or_slack);
    EXPECT_EQ(record.head.event_id, 41u);
    EXPECT_EQ(record.head.level, 3u);
  }
  // The record's own time is what a time window looks at.
  ReportCommand late = listing();
  late.start_time = filetime(2024, 1, 1);
  EXPECT_EQ(numbers(select(log, {late})), (std::vector<std::uint64_t>{2}));
}

TEST(selection, tests_each_condition_of_a_command) {
  event other = logon;
  other.event_id = 4625;
  other.data[0].value = slot::uint32(10);
  const auto log = log_builder().chunk({record(1, logon), record(2, other), record(3, logon)});
  const auto with = [](auto&& change) {
    ReportCommand command = listing();
    change(command);
    return command;
  };
  using command_change = void (*)(ReportCommand&);
  const struct {
    const char* reason;
    command_change change;
    std::vector<std::uint64_t> expected;
  } rows[] = {
      {"any", [](ReportCommand&) {}, {1, 2, 3}},
      {"number", [](ReportCommand& c) { c.event_id = 4625; }, {2}},
      {"a number with something in its high word is no record's",
       [](ReportCommand& c) { c.event_id = 0x100001211; },
       {}},
      {"first instant counts",
       [](ReportCommand& c) { c.start_time = default_filetime(2); },
       {2, 3}},
      {"last instant counts", [](ReportCommand& c) { c.stop_time = default_filetime(2); }, {1, 2}},
      {"one tick less", [](ReportCommand& c) { c.stop_time = default_filetime(2) - 1; }, {1}},
      {"0 is no end", [](ReportCommand& c) { c.stop_time = 0; }, {1, 2, 3}},
      {"value of a nested field, name in any case",
       [](ReportCommand& c) { c.conditions = {"logontype|1"}; },
       {2}},
      {"field that must be there", [](ReportCommand& c) { c.conditions = {"Path"}; }, {1, 2, 3}},
      {"field that is not",
       [](ReportCommand& c) {
         c.conditions = {"Path", "Host"};
       },
       {}},
      {"all must hold",
       [](ReportCommand& c) {
         c.conditions = {"LogonType|1", "Channel|SECURITY"};
       },
       {}},
      {"level", [](ReportCommand& c) { c.level_condition = "Level|2"; }, {1, 2, 3}},
      {"other level", [](ReportCommand& c) { c.level_condition = "Level|3"; }, {}},
      {"text in a value", [](ReportCommand& c) { c.string_exists = "fabrikam-LOGON"; }, {1, 2, 3}},
      {"text in a name", [](ReportCommand& c) { c.string_exists = "ogonTyp"; }, {1, 2, 3}},
      {"text in a literal", [](ReportCommand& c) { c.string_exists = "win/2004"; }, {1, 2, 3}},
      {"text nowhere", [](ReportCommand& c) { c.string_exists = "kerberos"; }, {}},
      {"matched but not kept", [](ReportCommand& c) { c.emit = false; }, {}},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(numbers(select(log, {with(row.change)})), row.expected) << row.reason;
  }
}

TEST(selection, the_first_command_that_selects_a_record_keeps_it) {
  ReportCommand first = listing();
  first.index = 0;
  first.name = "type ten";
  first.conditions = {"LogonType|10"};
  ReportCommand silent = listing();
  silent.event_id = 5;
  silent.emit = false;
  ReportCommand rest = listing();
  rest.index = 2;
  event ten = logon;
  ten.data[0].value = slot::uint32(10);
  const auto log =
      log_builder().chunk({record(1, logon), record(2, ten), record(3, {.event_id = 5})});
  const auto kept = select(log, {first, silent, rest});
  ASSERT_EQ(numbers(kept), (std::vector<std::uint64_t>{1, 2}));
  EXPECT_EQ(kept[0].head.report_entry_id, 2);
  EXPECT_EQ(kept[1].head.report_entry_id, 0);
  EXPECT_EQ(kept[1].description, "type ten");
}

TEST(selection, equal_times_keep_their_order_and_ranges_give_flags) {
  event late = logon;
  late.filetime = filetime(2024, 3, 1);
  event early = logon;
  early.filetime = filetime(2024, 2, 1);
  const auto log = log_builder().chunk(
      chunk_builder({record(1, late), record(2, early), record(3, late), record(4, early)})
          .declare(2, 5));
  const auto kept = select(log, {listing()});
  ASSERT_EQ(numbers(kept), (std::vector<std::uint64_t>{2, 4, 1, 3}));
  EXPECT_EQ(kept[2].head.flags, record_outside_range);
  EXPECT_EQ(kept[3].head.flags, record_inside_range);
}

// Looks up a field of each record that passes.
class look_up : public record_sink {
 public:
  void on_record(record_fields& record) override {
    std::string value;
    for (const auto& [name, expected] : expected_) {
      EXPECT_EQ(find_field(record, name, value, true), expected != "none") << name;
      EXPECT_EQ(value, expected == "none" ? "" : expected) << name;
    }
    EXPECT_FALSE(find_field(record, "Computer", value, false, true)) << "a field, not a slot";
    EXPECT_TRUE(find_field(record, "Path", value, false));
    EXPECT_EQ(value, "\na\r\n\tb,c");
    ++seen_;
  }
  int seen() const { return seen_; }

 private:
  cells expected_{{"path", ",a,b,c"}, {"LogonType", "3"}, {"COMPUTER", "WS7"}, {"Host", "none"}};
  int seen_ = 0;
};

TEST(find_field, looks_at_slots_then_fields) {
  byte_vector bytes = log_builder().chunk({record(7, logon)}).bytes();
  const output_format format;
  record_reader reader(format);
  look_up sink;
  walk_evtx_block(bytes, 0, reader, sink, {});
  EXPECT_EQ(sink.seen(), 1);
}

}  // namespace
}  // namespace zanvik::testing
