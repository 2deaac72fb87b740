// What marks records from slack, and their columns.
#include "reports/slack_columns.h"

#include <gtest/gtest.h>

#include <cstring>

#include "log_builder.h"
#include "log_files.h"
#include "reports/evtx_selector.h"
#include "scratch_dir.h"

namespace zanvik::testing {
namespace {

struct kept_record {
  std::uint64_t number = 0;
  std::uint32_t flags = 0;
  std::uint64_t event_id = 0;
  column_map columns;
};

// What a listing keeps of a log that is walked with the search for slack, by rising time.
std::vector<kept_record> listed(const log_builder& log) {
  ReportCommand listing;
  listing.all_data = true;
  const std::vector<ReportCommand> commands{listing};
  record_container records;
  plan_cache plans;
  evtx_selector selector(commands, records, plans);
  const output_format format;
  record_reader reader(format);
  walk_settings settings;
  settings.inc_slack = true;
  byte_vector bytes = log.bytes();
  walk_evtx_block(bytes, 0, reader, selector, settings);
  std::vector<kept_record> kept;
  for (const LogRecord* record : records.in_time_order()) {
    kept.push_back({record->record_number, record->flags, record->event_id, columns_of(*record)});
  }
  return kept;
}

// Keeps each record twice: as it is, with the columns of its slots added the plain way, and by the
// quick way.
class slot_column_check : public record_sink {
 public:
  void on_record(record_fields& record) override {
    if (record.plain && record.in_slack) return;  // goes the plain way
    record.after_slack = false;
    base_.keep(record);
    column_map expected = columns_of(records_.last());
    std::uint32_t flags = records_.last().flags;
    add_slot_columns(expected, flags, record);
    record.after_slack = true;
    quick_.keep(record);
    ASSERT_EQ(columns_of(records_.last()), expected) << record.number;
    ASSERT_EQ(records_.last().flags, flags);
    ++count;
  }
  std::size_t count = 0;

 private:
  static ReportCommand listing() {
    ReportCommand command;
    command.all_data = true;
    return command;
  }
  const ReportCommand command_ = listing();
  record_container records_;
  plan_cache plans_;
  record_keeper base_{command_, records_, plans_};
  record_keeper quick_{command_, records_, plans_};
};

TEST(slack_columns, the_quick_way_to_slot_columns_is_the_plain_one) {
  slot_column_check check;
  const output_format format;
  record_reader reader(format);
  walk_settings settings;
  settings.inc_slack = true;
  for (const std::string& path : log_files(".evtx")) {
    const std::string text = file_text(path);
    std::vector<std::byte> bytes(text.size());
    std::memcpy(bytes.data(), text.data(), text.size());
    walk_evtx_block(bytes, 0, reader, check, settings);
  }
  EXPECT_GT(check.count, 90u);
}

template_definition two_texts() {
  return {"0badf00d-1111-2222-3333-444455556666", [](bxml_builder& x) {
            x.fragment_header();
            x.open("First").close_start().normal_sub(0, 1).end_element();
            x.open("Second").close_start().normal_sub(1, 1).end_element().end_of_stream();
          }};
}

TEST(slack_columns, clean_names_and_values) {
  const std::string long_value(257, 'v');
  column_map columns{
      {std::string(64, 'a'), " \t64 bytes: good "},
      {std::string(65, 'b'), " of a name of 65 bytes "},
      {"line\nfeed", "of two lines"},
      {"at most 256", std::string(256, 'v')},
      {"257", long_value},
      {"untouched", "in  between"},
  };
  clean_slack_columns(columns);
  const column_map expected{
      {std::string(64, 'a'), "64 bytes: good"},
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
  const auto log = log_builder().chunk(
      chunk_builder({record(11), note(12), record(13)})
          .declare(11, 13)
          .slack(record(3))
          .slack(note(4))
          .slack(record(12))
          .slack(template_record(20, default_filetime(20), two_texts(), {rest_of_chunk})));
  const auto kept = listed(log);
  std::vector<std::pair<std::uint64_t, std::uint32_t>> flags;
  for (const kept_record& record : kept) flags.emplace_back(record.number, record.flags);
  constexpr std::uint32_t marked = 0x01, cut = 0x02, outside = 0x08, inside = 0x40;
  const decltype(flags) expected{{3, marked | outside}, {4, marked | outside},
                                 {11, inside},          {12, marked | inside},  // plain
                                 {12, marked | inside},                         // from slack
                                 {13, inside},          {20, marked | cut | outside}};
  EXPECT_EQ(flags, expected);
}

TEST(slack_columns, slots_by_number_from_the_first_candidate_on) {
  const std::vector<slot_value> values{slot::utf16("one"), slot::utf16(""), slot::utf16("three")};
  const auto two_and_more = [&](std::uint64_t number) {
    return template_record(number, default_filetime(number), two_texts(), values);
  };
  const auto log = log_builder()
                       .chunk(chunk_builder({two_and_more(7)}).slack(two_and_more(8)))
                       .chunk({two_and_more(9)});
  const auto kept = listed(log);
  ASSERT_EQ(kept.size(), 3u);
  const column_map own{{"First", "one"}, {"Second", ""}};
  EXPECT_EQ(kept[0].columns, own) << "read before any candidate";
  column_map with_slots = own;
  with_slots.insert({{"s01", "one"}, {"s03", "three"}});  // an empty slot has none, but its number
  EXPECT_EQ(kept[1].columns, with_slots) << "the candidate";
  EXPECT_EQ(kept[2].columns, with_slots) << "a declared record of a later chunk";
  EXPECT_EQ(kept[2].flags, record_inside_range);
}

TEST(slack_columns, only_candidates_without_a_template_are_cleaned) {
  const std::string long_name(70, 'n');
  const auto content = [&](bxml_builder& x) {
    x.fragment_header().open("Event").close_start();
    x.text_element(long_name, "value").text_element("Short", "  blanks  ");
    x.end_element().end_of_stream();
  };
  const auto log =
      log_builder().chunk(chunk_builder({plain_record(7, default_filetime(7), content)})
                              .slack(plain_record(8, default_filetime(8), content)));
  const auto kept = listed(log);
  ASSERT_EQ(kept.size(), 2u);
  EXPECT_EQ(kept[0].columns, (column_map{{long_name, "value"}, {"Short", "  blanks  "}}));
  EXPECT_EQ(kept[1].columns, (column_map{{"unk1", "value"}, {"Short", "blanks"}}));
}

TEST(slack_columns, an_event_id_that_only_the_template_holds) {
  const auto literal_id =
      template_record(7, default_filetime(7),
                      {"0badf00d-1111-2222-3333-444455557777",
                       [](bxml_builder& x) {
                         x.fragment_header().open("Event").close_start();
                         x.text_element("EventID", "4242");
                         x.open("First").close_start().normal_sub(0, 1).end_element();
                         x.end_element().end_of_stream();
                       }},
                      {slot::utf16("one")});
  const auto kept = listed(log_builder().chunk({literal_id}));
  ASSERT_EQ(kept.size(), 1u);
  EXPECT_EQ(kept[0].event_id, 4242u);
}

}  // namespace
}  // namespace zanvik::testing
