// The quick selection of .evtx records against the plain rule, record by record, over all logs at
// hand; and what pull lists make of a record.
#include "events/evtx_fields.h"
#include "kept_records.h"
#include "log_files.h"
#include "scratch_dir.h"

namespace zanvik {
namespace {

using namespace zanvik::testing;

ReportCommand command(std::uint64_t id, std::vector<std::string> conditions, std::string text = "",
                      std::vector<std::string> pull = {}) {
  ReportCommand made;
  made.event_id = id;
  made.conditions = std::move(conditions);
  made.string_exists = std::move(text);
  made.pull = std::move(pull);
  return made;
}

// Commands that overlap, by id and for any; what they ask for stands in slots, nested slots, fields
// of templates, and nowhere.
std::vector<ReportCommand> overlapping_commands() {
  std::vector<ReportCommand> commands = {
      command(4624, {"LogonType|2"}),
      command(any_event_id, {"Provider Name|security", "subjectusername|$"}, "system32"),
      command(4624, {"LogonType|3", "IpAddress"}),
      command(any_event_id, {"nosuchfield"}),
      command(any_event_id, {}, "eventlog", {"param1", "Data"}),
      command(7036, {"param2|STOPPED"}),
      command(any_event_id, {"Keywords|0x80", "Channel|system"}, "", {"Binary", "nosuch"}),
      command(any_event_id, {"Level|4", "Task|"}),
      command(12, {}),
      command(any_event_id, {}, "0e1"),
      command(any_event_id, {}, "true"),
      command(any_event_id, {}, "2024-03-0"),
      command(any_event_id, {}, "Unlikely Words"),
      command(any_event_id, {"EventRecordID|7"}),
      command(any_event_id, {}),
  };
  commands[1].stop_time = 0;
  commands[3].emit = false;
  commands[14].stop_time = filetime(2024, 3, 9);
  for (std::size_t i = 0; i < commands.size(); ++i) {
    commands[i].index = static_cast<std::int32_t>(i);
  }
  return commands;
}

bool has_pulled(const record_fields& record, const std::vector<std::string>& names) {
  std::string value;
  return names.empty() || std::any_of(names.begin(), names.end(), [&](const std::string& name) {
           return find_field(record, name, value, true);
         });
}

// The rule, one command after the other.
class plain_selector : public record_sink {
 public:
  explicit plain_selector(const std::vector<ReportCommand>& commands) : commands_(commands) {}

  void on_record(record_fields& record) override {
    for (const ReportCommand& each : commands_) {
      if (!match_record_plainly(each, record, scratch_) || !has_pulled(record, each.pull)) continue;
      if (each.emit) selected[record.file_offset] = {record.number, each.index};
      return;
    }
  }

  std::map<std::uint64_t, std::pair<std::uint64_t, std::int32_t>> selected;  // by file offset

 private:
  const std::vector<ReportCommand>& commands_;
  std::string scratch_;
};

TEST(evtx_selector, selects_what_the_plain_rule_selects) {
  const auto commands = overlapping_commands();
  std::map<std::int32_t, std::size_t> uses;
  for (const std::string& path : log_files(".evtx")) {
    std::string bytes = file_text(path);
    const kept_records quick(std::as_bytes(std::span(bytes)), commands);
    plain_selector plain(commands);
    const output_format format;
    record_reader reader(format);
    walk_evtx_block(std::as_writable_bytes(std::span(bytes)), 0, reader, plain, {});
    decltype(plain.selected) selected;
    for (const LogRecord* record : quick.records) {
      selected[record->file_offset] = {record->record_number, record->report_entry_id};
      ++uses[record->report_entry_id];
    }
    EXPECT_EQ(selected, plain.selected) << path;
  }
  EXPECT_GE(uses.size(), 4u) << "the commands are of no use for these logs";
}

// The columns that a pull list makes of the one record of a log; provider and level in front.
std::string pulled(const record_builder& record, std::vector<std::string> pull) {
  const kept_records kept(log_builder().chunk({record}).bytes(),
                          {command(any_event_id, {}, "", std::move(pull))});
  if (kept.records.empty()) return "not selected";
  return *kept[0].provider + " " + std::to_string(kept[0].level) + "; " + columns_text(kept[0]);
}

TEST(evtx_selector, pulled_columns) {
  const event content{.provider = "Prov",
                      .level = 2,
                      .data = {{"User", slot::utf16("anna")},
                               {"Text", slot::utf16("a\r\n\tb")},
                               {"Break", slot::utf16("\r\n")},
                               {"Bytes", slot::binary(bytes_of({1, 2}))}}};
  event classic = content;
  classic.classic = true;
  const std::tuple<const char*, event, std::vector<std::string>, const char*> rows[] = {
      {"by name, in order of the names",
       content,
       {"User", "Computer"},
       "Prov 0; Computer=FABRIKAM-WS01; User=anna"},
      {"any case, shown as written", content, {"uSER"}, "Prov 0; uSER=anna"},
      {"a missing one is empty", content, {"nosuch", "User"}, "Prov 0; User=anna; nosuch="},
      {"nothing found", content, {"nosuch"}, "not selected"},
      {"the provider that comes along is no hit", classic, {"nosuch"}, "not selected"},
      {"one that was asked for is",
       content,
       {"nosuch", "Provider Name"},
       "Prov 0; Provider Name=Prov; nosuch="},
      {"first, it is not taken from the record",
       content,
       {"Provider Name"},
       " 0; Provider Name=Prov"},
      {"but from the template", classic, {"Provider Name"}, "Prov 0; Provider Name=Prov"},
      {"the level goes with its column", content, {"Level"}, "Prov 2; Level=2"},
      {"on one line, with commas", content, {"Text"}, "Prov 0; Text=a,b"},
      {"a lone line break is nothing", content, {"Break"}, "Prov 0; Break="},
      {"bytes", content, {"Bytes"}, "Prov 0; Bytes=01 02"},
      {"of the template",
       content,
       {"Event xmlns"},
       "Prov 0; Event xmlns=http://schemas.microsoft.com/win/2004/08/events/event"},
  };
  for (const auto& [reason, given, pull, expected] : rows) {
    EXPECT_EQ(pulled(record(1, given), pull), expected) << reason;
  }
}

TEST(evtx_selector, pulled_columns_of_a_record_without_template) {
  const record_builder plain = plain_record(5, default_filetime(5), [](bxml_builder& xml) {
    xml.fragment_header().open("Event").close_start();
    xml.text_element("Level", "3").text_element("Text", "a\nb").end_element().end_of_stream();
  });
  EXPECT_EQ(pulled(plain, {"text", "nosuch", "Level"}), " 3; Level=3; nosuch=; text=a[LF]b");
  EXPECT_EQ(pulled(plain, {"nosuch"}), "not selected");
}

}  // namespace
}  // namespace zanvik
