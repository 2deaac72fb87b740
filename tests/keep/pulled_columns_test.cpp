// The columns that pull lists make of a record.
#include "kept_records.h"

namespace zanvik {
namespace {

using namespace zanvik::testing;

// The columns that a pull list makes of the only record of a log; provider and level come first.
std::string pulled(const record_builder& record, std::vector<std::string> pull) {
  ReportCommand command;
  command.pull = std::move(pull);
  const kept_records kept(log_builder().chunk({record}).bytes(), {command});
  if (kept.records.empty()) return "not selected";
  return *kept[0].provider + " " + std::to_string(kept[0].level) + "; " + columns_text(kept[0]);
}

TEST(pulled_columns, by_name) {
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

TEST(pulled_columns, of_a_record_without_template) {
  const record_builder plain = plain_record(5, default_filetime(5), [](bxml_builder& xml) {
    xml.fragment_header().open("Event").close_start();
    xml.text_element("Level", "3").text_element("Text", "a\nb").end_element().end_of_stream();
  });
  EXPECT_EQ(pulled(plain, {"text", "nosuch", "Level"}), " 3; Level=3; nosuch=; text=a[LF]b");
  EXPECT_EQ(pulled(plain, {"nosuch"}), "not selected");
}

}  // namespace
}  // namespace zanvik
