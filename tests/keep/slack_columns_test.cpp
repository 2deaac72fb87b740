// The marks of records from slack, and their columns.
#include "keep/slack_columns.h"

#include "kept_records.h"

namespace zanvik::testing {
namespace {

// What a listing keeps of a log that is walked with the search for slack.
kept_records listed(const chunk_builder& chunk) {
  return {log_builder().chunk(chunk).bytes(), {listing()}, true};
}

template_definition two_texts() {
  return named_slots("0badf00d-1111-2222-3333-444455556666", {"First", "Second"});
}

TEST(slack_columns, clean_names_and_values) {
  const std::string long_value(257, 'v'), longest_name(64, 'a');
  column_map columns{
      {longest_name, " \t64 bytes: good "},
      {std::string(65, 'b'), " of a name of 65 bytes "},
      {"line\nfeed", "of two lines"},
      {"at most 256", std::string(256, 'v')},
      {"257", long_value},
      {"untouched", "in  between"},
  };
  clean_slack_columns(columns);
  const column_map expected{
      {longest_name, "64 bytes: good"},
      {"unk1", " of a name of 65 bytes "},  // junk in the order of its names, values as they are
      {"unk2", "of two lines"},
      {"at most 256", std::string(256, 'v')},
      {"257", long_value + "..."},  // longer by three, not cut
      {"untouched", "in  between"},
  };
  EXPECT_EQ(columns, expected);
}

TEST(slack_columns, flags_tell_where_a_record_comes_from) {
  const auto note = [](std::uint64_t number) {
    return plain_record(number, default_filetime(number), [](bxml_builder& x) {
      x.fragment_header();
      x.open("EventData").close_start().text_element("Note", "x").end_element().end_of_stream();
    });
  };
  const auto rest_of_chunk = slot::with_declared_size(slot::utf16("cut"), 65000);
  const auto kept =
      listed(chunk_builder({record(11), note(12), record(13)})
                 .declare(11, 13)
                 .slack(record(3))
                 .slack(note(4))
                 .slack(record(12))
                 .slack(template_record(20, default_filetime(20), two_texts(), {rest_of_chunk})));
  std::vector<std::pair<std::uint64_t, std::uint32_t>> flags;
  for (const LogRecord* found : kept.records) {
    flags.emplace_back(found->record_number, found->flags);
  }
  constexpr std::uint32_t marked = 0x01, cut = 0x02, outside = 0x08, inside = 0x40;
  const decltype(flags) expected{{3, marked | outside}, {4, marked | outside},
                                 {11, inside},          {12, marked | inside},  // plain
                                 {12, marked | inside},                         // from slack
                                 {13, inside},          {20, marked | cut | outside}};
  EXPECT_EQ(flags, expected);
}

TEST(slack_columns, slots_by_number_from_the_first_candidate_on) {
  const std::vector<slot_value> values{slot::utf16("one"), slot::utf16(""), slot::utf16("three")};
  const auto three = [&](std::uint64_t number) {
    return template_record(number, default_filetime(number), two_texts(), values);
  };
  const auto log = log_builder().chunk(chunk_builder({three(7)}).slack(three(8))).chunk({three(9)});
  const kept_records kept(log.bytes(), {listing()}, true);
  ASSERT_EQ(kept.records.size(), 3u);
  EXPECT_EQ(columns_text(kept[0]), "First=one; Second=") << "read before any candidate";
  // An empty slot has no column, but its number.
  const std::string with_slots = "First=one; Second=; s01=one; s03=three";
  EXPECT_EQ(columns_text(kept[1]), with_slots) << "the candidate";
  EXPECT_EQ(columns_text(kept[2]), with_slots) << "a declared record of a later chunk";
  EXPECT_EQ(kept[2].flags, record_inside_range);
}

TEST(slack_columns, nested_values_are_no_slots_of_their_record) {
  const auto log = log_builder().chunk(chunk_builder({record(7)}).slack(record(8)));
  const kept_records kept(log.bytes(), {listing()}, true);
  ASSERT_EQ(kept.records.size(), 2u);
  const std::string columns = columns_text(kept[1]);
  EXPECT_NE(columns.find("01:Text=text of 8"), std::string::npos) << columns;
  EXPECT_NE(columns.find("; s09=612; s10=4; s11=8; "), std::string::npos) << columns;
  EXPECT_NE(columns.find("s17=Application"), std::string::npos) << columns;
  EXPECT_EQ(columns.find("s19="), std::string::npos) << columns;
}

TEST(slack_columns, only_candidates_without_a_template_are_cleaned) {
  const std::string long_name(70, 'n');
  const auto content = [&](bxml_builder& x) {
    x.fragment_header().open("Event").close_start();
    x.text_element(long_name, "value").text_element("Short", "  blanks  ");
    x.end_element().end_of_stream();
  };
  const auto kept = listed(chunk_builder({plain_record(7, default_filetime(7), content)})
                               .slack(plain_record(8, default_filetime(8), content)));
  ASSERT_EQ(kept.records.size(), 2u);
  EXPECT_EQ(columns_text(kept[0]), "Short=  blanks  ; " + long_name + "=value");
  EXPECT_EQ(columns_text(kept[1]), "Short=blanks; unk1=value");
}

TEST(slack_columns, an_event_id_that_only_the_template_holds) {
  const bxml_writer id = [](bxml_builder& x) { x.text_element("EventID", "4242"); };
  const auto kept = listed({template_record(
      7, default_filetime(7), named_slots("0badf00d-1111-2222-3333-444455557777", {"First"}, id),
      {slot::utf16("one")})});
  ASSERT_EQ(kept.records.size(), 1u);
  EXPECT_EQ(kept[0].event_id, 4242u);
}

}  // namespace
}  // namespace zanvik::testing
