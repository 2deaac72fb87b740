// The table of questions is well formed, and rows are read from events as it says.
#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <regex>
#include <set>

#include "evt_builder.h"
#include "exported_events.h"
#include "questions/question_reader.h"

namespace zanvik::testing {
namespace {

// Rows as text: "logons: what; account=…; logon_type=…", empty columns left out.
class row_sink : public event_sink {
 public:
  void on_event(const event_view& event) override {
    for (const question_match& match : reader_.matches(event)) {
      std::string row = std::string(match.asked().name) + ": " + std::string(match.source().what);
      for (std::size_t i = 0; i < match.columns(); ++i) {
        const std::string value(reader_.text(event, match, i));
        if (value.empty()) continue;
        row += "; " + std::string(match.asked().columns[i].name) + "=" + value;
      }
      rows.push_back(row);
    }
  }
  std::vector<std::string> rows;

 private:
  question_reader reader_;
};

std::vector<std::string> rows_of(log_builder log) {
  own_bytes bytes(log.bytes());
  row_sink sink;
  log_source source;
  source.path = "a.evtx";
  evtx_event_reader reader(sink);
  reader.set_source(source);
  walk_evtx_block(bytes.span(), 0, reader, {});
  return sink.rows;
}

constexpr const char* security = "Microsoft-Windows-Security-Auditing";

TEST(questions, the_table_is_well_formed) {
  const std::regex identifier("[a-z][a-z0-9_]*");
  const std::set<std::string_view> given = {"time", "computer", "what",
                                            "log",  "record",   "event_id"};
  std::set<std::string_view> names;
  for (const question& asked : questions()) {
    EXPECT_TRUE(std::regex_match(std::string(asked.name), identifier)) << asked.name;
    EXPECT_TRUE(names.insert(asked.name).second) << asked.name;
    const auto groups = question_groups();
    EXPECT_NE(std::find(groups.begin(), groups.end(), asked.group), groups.end()) << asked.group;
    ASSERT_LE(asked.columns.size(), question_columns);
    std::set<std::string_view> columns = given;
    for (const question_column& column : asked.columns) {
      EXPECT_TRUE(std::regex_match(std::string(column.name), identifier)) << column.name;
      EXPECT_TRUE(columns.insert(column.name).second) << asked.name << " " << column.name;
    }
    std::set<std::pair<std::string_view, std::uint16_t>> sources;
    for (const question_source& source : asked.sources) {
      EXPECT_TRUE(sources.insert({source.provider, source.event_id}).second) << source.event_id;
      EXPECT_FALSE(source.what.empty()) << source.event_id;
      for (std::size_t i = asked.columns.size(); i < question_columns; ++i) {
        EXPECT_EQ(source.fields[i], "") << asked.name << " " << source.event_id;
      }
    }
  }
}

TEST(questions, codes_have_one_meaning_and_are_found_in_any_case) {
  for (const question& asked : questions()) {
    for (const question_column& column : asked.columns) {
      if (column.codes == nullptr) continue;
      std::map<std::string_view, std::string_view> words;
      for (const code_word& row : column.codes->rows) {
        EXPECT_TRUE(words.emplace(row.code, row.words).second) << row.code;
        std::string upper(row.code);
        std::transform(upper.begin(), upper.end(), upper.begin(),
                       [](char c) { return c >= 'a' && c <= 'z' ? static_cast<char>(c - 32) : c; });
        EXPECT_EQ(words_for(*column.codes, upper), row.words) << row.code;
      }
      EXPECT_EQ(words_for(*column.codes, "77"), "");
    }
  }
}

TEST(question_reader, reads_named_data_user_data_and_system_members) {
  const auto rows =
      rows_of(log_builder().chunk({record(1, {.event_id = 4625,
                                              .provider = security,
                                              .data = {{"TargetUserName", slot::utf16("anna")},
                                                       {"Status", slot::hex32(0xc000006d)},
                                                       {"SubStatus", slot::hex32(0xc000006a)},
                                                       {"LogonType", slot::uint32(10)},
                                                       {"IpAddress", slot::utf16("-")},
                                                       {"WorkstationName", slot::utf16("WS01")}}}),
                                   record(2, {.event_id = 1102,
                                              .provider = "Microsoft-Windows-Eventlog",
                                              .channel = "Security",
                                              .form = payload_form::user_data,
                                              .data = {{"SubjectUserName", slot::utf16("tom")}}}),
                                   // Another provider's event of that number.
                                   record(3, {.event_id = 4625, .provider = "Fabrikam-Test"}),
                                   record(4, {.event_id = 4625,
                                              .provider = security,
                                              .data = {{"TargetUserName", slot::utf16("tom")},
                                                       {"Status", slot::hex32(0xc0000234)},
                                                       {"SubStatus", slot::hex32(0)}}})}));
  EXPECT_EQ(rows, (std::vector<std::string>{
                      "failed_logons: logon failed; account=anna; reason=0xc000006a; "
                      "logon_type=10; source_host=WS01",
                      "cleared: audit log cleared; log_name=Security; account=tom",
                      "failed_logons: logon failed; account=tom; reason=0xc0000234"}));
}

TEST(question_reader, conditions_and_alternatives) {
  const auto refused = [](std::uint64_t number, slot_value status) {
    return record(number, {.event_id = 4776,
                           .provider = security,
                           .data = {{"TargetUserName", slot::utf16("anna")}, {"Status", status}}});
  };
  const auto device = [](std::uint64_t number, const char* id) {
    return record(number, {.event_id = 2003,
                           .provider = "Microsoft-Windows-DriverFrameworks-UserMode",
                           .form = payload_form::user_data,
                           .data = {{"InstanceId", slot::utf16(id)}}});
  };
  const auto shutdown = [](std::uint64_t number, payload_form form) {
    std::vector<data_field> data;
    for (const char* text : {"setup.exe", "WS01", "planned", "0x1", "restart", "-", "anna"}) {
      data.push_back({"param" + std::to_string(data.size() + 1), slot::utf16(text)});
    }
    return record(number, {.event_id = 1074, .provider = "USER32", .form = form, .data = data});
  };
  const std::string restart =
      "starts_and_stops: shutdown requested; type=restart; reason=planned; process=setup.exe; "
      "account=anna";
  EXPECT_EQ(
      rows_of(log_builder().chunk(
          {refused(1, slot::hex32(0)), refused(2, slot::hex32(0xc0000064)),
           refused(3, slot::null()), device(4, "usb\\VID_1"), device(5, "SWD\\PRINTENUM"),
           shutdown(6, payload_form::event_data), shutdown(7, payload_form::unnamed_event_data)})),
      (std::vector<std::string>{
          "failed_logons: NTLM credentials refused; account=anna; reason=0xc0000064",
          "usb: device attached; device=usb\\VID_1", restart, restart}));
}

// Records of legacy logs have one shape for all IDs.
TEST(question_reader, legacy_events_of_one_shape_and_several_ids) {
  const auto log = evt_builder()
                       .add({.event_id = 626,
                             .source = "Security",
                             .strings = {"anna", "WS01", "S-1-5", "tom", "WS01"}})
                       .add({.event_id = 592,
                             .source = "Security",
                             .strings = {"1200", "C:\\a.exe", "4", "anna", "WS01"}})
                       .cursor();
  own_bytes bytes(log.bytes());
  row_sink sink;
  evt_event_reader reader(sink);
  log_source source;
  source.path = "a.evt";
  source.kind = log_kind::evt;
  reader.set_source(source);
  reader.set_buffer(0, bytes.span().data() + bytes.span().size());
  ASSERT_TRUE(walk_evt_log(bytes.span(), reader));
  EXPECT_EQ(sink.rows,
            (std::vector<std::string>{
                "accounts: account enabled; account=anna; domain=WS01; by_account=tom; "
                "by_domain=WS01; sid=S-1-5",
                "processes: process started; image=C:\\a.exe; account=anna; domain=WS01; "
                "process_id=1200; parent_process_id=4"}));
}

}  // namespace
}  // namespace zanvik::testing
