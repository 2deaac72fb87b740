// From decoded .evtx records to selected ones: look-ups, selection, columns.
#include "events/evtx_fields.h"
#include "kept_records.h"

namespace zanvik::testing {
namespace {

using numbers = std::vector<std::uint64_t>;

constexpr const char* guid_a = "aaaaaaaa-0000-0000-0000-00000000000a";
constexpr const char* guid_b = "bbbbbbbb-0000-0000-0000-00000000000b";

kept_records select(const log_builder& log, const std::vector<ReportCommand>& commands) {
  return {log.bytes(), commands};
}

// "provider: columns" of each record, a line each.
std::string listed(const std::vector<record_builder>& given, const ReportCommand& command) {
  std::string text;
  const kept_records kept(log_builder().chunk(chunk_builder(given)).bytes(), {command});
  for (const LogRecord* record : kept.records) {
    text += *record->provider + ": " + columns_text(*record) + "\n";
  }
  return text;
}
std::string listed(const template_definition& definition, const std::vector<slot_value>& slots) {
  return listed({template_record(7, 9, definition, slots)}, listing());
}

const event logon{.event_id = 4624,
                  .provider = "Fabrikam-Logon",
                  .level = 2,
                  .computer = "WS7",
                  .user_sid = "S-1-5-18",
                  .data = {{"LogonType", slot::uint32(3)}, {"Path", slot::utf16("\na\r\n\tb,c")}}};

// Templates that give their slots the same names, one of them with two nested.
TEST(all_data, a_nested_value_is_not_taken_for_an_own_one_of_its_name) {
  const auto names = [](std::uint16_t first_slot) {
    return [first_slot](bxml_builder& b) {
      b.fragment_header();
      b.open("A").close_start().normal_sub(first_slot, 1).end_element();
      b.open("B").close_start().normal_sub(first_slot + 1, 1).end_element().end_of_stream();
    };
  };
  const std::vector<slot_value> two{slot::utf16("1"), slot::utf16("2")};
  const template_definition inner{"11111111-2222-3333-4455-667788990011", names(0)};
  const template_definition flat{"31111111-2222-3333-4455-667788990011", names(1)};
  const auto nested = slot::bxml([=](bxml_builder& b) { b.template_instance(inner, two); });
  const auto first = template_record(1, 133000000000000000, named_slots(guid_a, {}), {nested});
  EXPECT_EQ(
      listed({first, template_record(2, 133000000000000000, flat, {slot::null(), two[0], two[1]})},
             listing()),
      ": 01:A=1; 02:B=2\n: A=1; B=2\n");
}

TEST(all_data, columns_are_slots_and_fields_by_their_names) {
  const auto log = log_builder().chunk({record(7, logon)});
  // Line feeds become ":", one leading ":" is removed.
  const std::string data =
      "01:LogonType=3; 02:Path=a:b,c; Channel=Application; Computer=WS7; "
      "Correlation ActivityID=0; Correlation RelatedActivityID=0; Event xmlns="
      "http://schemas.microsoft.com/win/2004/08/events/event; ";
  const std::string rest =
      "EventID Qualifiers=0; EventRecordID=7; Execution ProcessID=612; "
      "Execution ThreadID=4; Keywords=0x8000000000000000; Level=2; Opcode=0; "
      "Provider Guid=0; Security UserID=S-1-5-18; Task=0; "
      "TimeCreated SystemTime=2024-01-15 08:00:07.000000000; Version=0";
  const auto kept = select(log, {listing()});
  ASSERT_EQ(kept.numbers, numbers{7});
  EXPECT_EQ(columns_text(kept[0]), data + rest);
  EXPECT_EQ(*kept[0].provider, "Fabrikam-Logon");
  EXPECT_EQ(kept[0].event_id, 4624u);
  EXPECT_EQ(kept[0].level, 2u);
  EXPECT_EQ(kept[0].time, default_filetime(7));
  EXPECT_EQ(kept[0].flags, record_inside_range);
  EXPECT_EQ(kept[0].file_offset, log.record_offset(0, 0));
  ReportCommand with_system = listing();
  with_system.skip_system_fields = false;
  EXPECT_EQ(columns_text(select(log, {with_system})[0]), data + "EventID=4624; " + rest);
}

TEST(all_data, names_that_are_not_plain_columns) {
  const bxml_writer literal = [](bxml_builder& x) {
    x.open_with_attributes("Provider").attribute("Name").value("Literal").close_empty();
  };
  const slot_value p = slot::utf16("P"), q = slot::utf16("Q");
  const std::string provider = "Provider Name";
  const std::tuple<const char*, std::vector<std::string>, std::vector<slot_value>, bxml_writer,
                   std::string>
      rows[] = {
          {"the first of each goes, what comes again stays, and the record's own number stays",
           {"EventID", "EventID", "SystemTime", "EventRecordID"},
           {slot::uint8(1), slot::uint8(2), slot::uint8(3), slot::uint8(4)},
           {},
           ": EventID=2; EventRecordID=4\n"},
          {"provider from a slot", {provider, "A"}, {p, q}, {}, "P: A=Q\n"},
          {"from a literal; a slot of that name is a column then",
           {provider, "A"},
           {p, q},
           literal,
           "Literal: A=Q; Provider Name=P\n"},
          {"an empty one leaves the next a chance",
           {provider, provider},
           {slot::utf16(""), q},
           {},
           "Q: \n"},
          {"a full one does not", {provider, provider}, {p, q}, {}, "P: Provider Name=Q\n"},
          {"a lone line feed is stored as a colon, a lone comma as nothing",
           {"A", "B", "C"},
           {slot::utf16("\n\n"), slot::utf16(","), slot::utf16("\n")},
           {},
           ": A=:; B=; C=\n"},
          {"a binary value's runs, each with a blank",
           {"A"},
           {slot::binary(slot::utf16("Disk").bytes)},
           {},
           ": A=Disk \n"},
          {"an empty binary value of a slot of its own", {"A"}, {slot::binary({})}, {}, ": A=\n"},
          {"a slot without a name is no column", {"A"}, {p, q}, {}, ": A=P\n"},
      };
  for (const auto& [reason, names, slots, before, expected] : rows) {
    EXPECT_EQ(listed(named_slots(guid_a, names, before), slots), expected) << reason;
  }
}

TEST(all_data, nested_values_have_numbers) {
  std::vector<slot_value> values{slot::utf16("x"), slot::binary({}), slot::utf16(""),
                                 slot::binary(bytes_of({1, 2}))};
  for (int i = 4; i < 12; ++i) values.push_back(slot::uint8(static_cast<std::uint8_t>(i)));
  const auto nested = slot::bxml([values](bxml_builder& x) {
    x.template_instance(named_slots(guid_b, {"A", "B", "C"}), values);
  });
  EXPECT_EQ(listed(named_slots(guid_a, {"Own"}), {slot::utf16("o"), nested}),
            ": 01:A=x; 02:B=[null]; 03:C=; 04:<unnamed>=01 02; 05:<unnamed>=4; 06:<unnamed>=5; "
            "07:<unnamed>=6; 08:<unnamed>=7; 09:<unnamed>=8; 10:<unnamed>=9; 11:<unnamed>=10; "
            "12:<unnamed>=11; Own=o\n");
  const auto plain = slot::bxml([](bxml_builder& x) {
    x.fragment_header().open("A").close_start().value("b\nc").end_element().end_of_stream();
  });
  EXPECT_EQ(listed(named_slots(guid_a, {"Own"}), {slot::utf16("o"), plain}),
            ": Own=o; UserData=<A>\"bc\"</A>\n");
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
  ASSERT_EQ(kept.numbers, (numbers{1, 2}));
  EXPECT_EQ(kept[0].time, filetime(2023, 4, 5, 6, 7, 8, 5000000));
  EXPECT_EQ(kept[1].time, written);
  EXPECT_EQ(columns_text(kept[0]),
            "01:Data=a; b; Level=3; TimeCreated (Collector) UTC=2024-05-06 07:08:09.123; "
            "TimeCreated SystemTime=2023-04-05T06:07:08.5Z");
  EXPECT_EQ(columns_text(kept[1]).find("Collector"), std::string::npos);
  for (const LogRecord* record : kept.records) {
    EXPECT_EQ(record->flags, record_inside_range | record_plain_or_slack);
    EXPECT_EQ(record->event_id, 41u);
    EXPECT_EQ(record->level, 3u);
  }
  // A time window uses the record's own time.
  ReportCommand late = listing();
  late.start_time = filetime(2024, 1, 1);
  EXPECT_EQ(select(log, {late}).numbers, numbers{2});
}

TEST(selection, tests_each_condition_of_a_command) {
  event other = logon;
  other.event_id = 4625;
  other.data = {{"LogonType", slot::uint32(10)},
                {"Path", slot::utf16("\u4e2d\u6587")},
                {"Elevated", slot::boolean(true)}};
  const auto log = log_builder().chunk({record(1, logon), record(2, other), record(3, logon)});
  using strings = std::vector<std::string>;
  const numbers all{1, 2, 3};
  const std::tuple<const char*, void (*)(ReportCommand&), numbers> rows[] = {
      {"any", [](ReportCommand&) {}, all},
      {"number", [](ReportCommand& c) { c.event_id = 4625; }, {2}},
      {"with a high word it is none", [](ReportCommand& c) { c.event_id = 0x100001211; }, {}},
      {"first instant", [](ReportCommand& c) { c.start_time = default_filetime(2); }, {2, 3}},
      {"last instant", [](ReportCommand& c) { c.stop_time = default_filetime(2); }, {1, 2}},
      {"one tick less", [](ReportCommand& c) { c.stop_time = default_filetime(2) - 1; }, {1}},
      {"0 is no end", [](ReportCommand& c) { c.stop_time = 0; }, all},
      {"nested, any case", [](ReportCommand& c) { c.conditions = {"logontype|1"}; }, {2}},
      {"must be there", [](ReportCommand& c) { c.conditions = {"Path"}; }, all},
      {"is not",
       [](ReportCommand& c) {
         c.conditions = strings{"Path", "Host"};
       },
       {}},
      {"all must hold",
       [](ReportCommand& c) {
         c.conditions = strings{"LogonType|1", "Channel|SECURITY"};
       },
       {}},
      {"level", [](ReportCommand& c) { c.level_condition = "Level|2"; }, all},
      {"other level", [](ReportCommand& c) { c.level_condition = "Level|3"; }, {}},
      {"text in a value", [](ReportCommand& c) { c.string_exists = "fabrikam-LOGON"; }, all},
      {"text in a name", [](ReportCommand& c) { c.string_exists = "ogonTyp"; }, all},
      {"text in a literal", [](ReportCommand& c) { c.string_exists = "win/2004"; }, all},
      {"text nowhere", [](ReportCommand& c) { c.string_exists = "kerberos"; }, {}},
      {"as many bytes as two units can have",
       [](ReportCommand& c) { c.string_exists = "\u4e2d\u6587"; },
       {2}},
      {"a truth value's", [](ReportCommand& c) { c.string_exists = "tru"; }, {2}},
      {"matched but not kept", [](ReportCommand& c) { c.emit = false; }, {}},
  };
  for (const auto& [reason, change, expected] : rows) {
    ReportCommand command = listing();
    change(command);
    EXPECT_EQ(select(log, {command}).numbers, expected) << reason;
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
  ASSERT_EQ(kept.numbers, (numbers{1, 2}));
  EXPECT_EQ(kept[0].report_entry_id, 2);
  EXPECT_EQ(kept[1].report_entry_id, 0);
  EXPECT_EQ(*kept[1].description, "type ten");
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
  ASSERT_EQ(kept.numbers, (numbers{2, 4, 1, 3}));
  EXPECT_EQ(kept[2].flags, record_outside_range);
  EXPECT_EQ(kept[3].flags, record_inside_range);
}

// Looks up fields of each record that passes.
struct look_up : record_sink {
  void on_record(record_fields& record) override {
    const std::pair<const char*, const char*> rows[] = {
        {"path", ",a,b,c"}, {"LogonType", "3"}, {"COMPUTER", "WS7"}, {"Host", ""}};
    std::string value;
    for (const auto& [name, expected] : rows) {
      EXPECT_EQ(find_field(record, name, value, true), *expected != 0) << name;
      EXPECT_EQ(value, expected) << name;
    }
    EXPECT_TRUE(find_field(record, "Path", value, false));
    EXPECT_EQ(value, "\na\r\n\tb,c");
    ++seen;
  }
  int seen = 0;
};

TEST(find_field, looks_at_slots_then_fields) {
  byte_vector bytes = log_builder().chunk({record(7, logon)}).bytes();
  const output_format format;
  record_reader reader(format);
  look_up sink;
  walk_evtx_block(bytes, 0, reader, sink, {});
  EXPECT_EQ(sink.seen, 1);
}

}  // namespace
}  // namespace zanvik::testing
