// Dispatch and grouping, path aliases, levels; and the fast tables compared with the plain ones.
#include "output/write_records.h"

#include <gtest/gtest.h>

#include "output/cell_text.h"
#include "output/path_alias.h"
#include "record_tables.h"
#include "reference/plain_output.h"

namespace zanvik {
namespace {

// The first cell of each line; "-" for an empty line.
std::string first_cells(const std::string& text) {
  std::string result;
  std::istringstream in(text);
  for (std::string one; std::getline(in, one);) {
    result += one.empty() ? "-" : one.substr(0, one.find(','));
    result += ' ';
  }
  return result;
}

TEST(write_records, groups_by_event_id_and_provider) {
  const auto at = [](std::uint64_t number, std::uint64_t id, std::string_view provider,
                     std::uint64_t later = 0) {
    return test_record(id).number(number).from(provider).time(new_year_2013 + later);
  };
  const std::tuple<const char*, std::vector<test_record>, const char*> cases[] = {
      {"nothing, not even a header", {}, ""},
      {"numbers, not texts, order the IDs",
       {at(1, 10, "P"), at(2, 9, "P")},
       "Record# 2 - Record# 1 "},
      {"the whole ID counts",
       {at(1, 0x10001, "P"), at(2, 1, "P"), at(3, 1ull << 40, "P")},
       "Record# 2 - Record# 1 - Record# 3 "},
      {"bytes order the providers",
       {at(1, 1, "\xc3\xa9"), at(2, 1, "a"), at(3, 1, "B")},
       "Record# 3 - Record# 2 - Record# 1 "},
      {"time orders a group, then insertion",
       {at(1, 1, "P", 5), at(2, 1, "P"), at(3, 2, "P"), at(4, 1, "P"), at(5, 1, "P", 5)},
       "Record# 2 4 1 5 - Record# 3 "},
  };
  for (const auto& [reason, given, expected] : cases) {
    EXPECT_EQ(first_cells(table_text(given, csv_format())), expected) << reason;
  }
}

TEST(write_records, takes_the_form_from_the_format) {
  record_container records;
  test_record(1).add_to(records);
  std::ostringstream none;
  output_format format = csv_format();
  format.output_csv = false;  // as a form without records leaves it
  output_memory memory;
  write_records(none, records, format, {.log = test_log()}, memory);
  EXPECT_EQ(none.str(), "");

  std::ostringstream out;
  format.output_csv = true;
  format.csv_separator = ";\t";
  write_records(out, records, format, {}, memory);
  EXPECT_EQ(out.str().substr(0, 16), "Record#;\tEventID");
}

TEST(path_alias, whole_paths_before_folders) {
  output_format format;
  EXPECT_EQ(apply_alias(format, "/Img/A.evtx"), "/Img/A.evtx");
  format.alias_files = {{"/img/a.evtx", "first"}};
  format.alias_paths = {{"/img", "C:"}, {"/logs", "D:"}, {"/vol/b.evtx", "never"}};
  const std::tuple<const char*, const char*, const char*> cases[] = {
      {"/IMG/A.evtx", "first", "the whole path, in any case"},
      {"/Img/Logs/B.evtx", "C:/Logs/B.evtx", "the first key that occurs; the rest keeps its case"},
      {"/mnt/Logs/B.evtx", "D:/B.evtx", "anywhere; what stands before it goes"},
      {"/Vol/B.evtx", "/Vol/B.evtx", "a key as long as the path does not count"},
      {"", "", "no path"},
  };
  for (const auto& [path, expected, reason] : cases)
    EXPECT_EQ(apply_alias(format, path), expected) << reason;
}

TEST(cell_text, levels) {
  std::string evtx, evt;
  for (std::uint32_t level = 0; level <= 16; ++level) {
    evtx += std::string(level_text(true, level)) + ' ';
    evt += std::string(level_text(false, level)) + ' ';
  }
  EXPECT_EQ(evtx, "info crit error warn info unk unk unk unk unk unk unk unk unk unk unk unk ");
  EXPECT_EQ(evt, "info error warn unk info unk unk unk a-pass unk a-fail unk unk unk unk unk unk ");
}

// ---- two ways, one answer

// write_records by the plain way.
std::string plain_text(record_container& records, const output_format& format,
                       const write_context& context) {
  std::ostringstream out;
  write_plain_tables(out, records.in_time_order(), format, context);
  return out.str();
}

// A format with any changes that options can make to tables.
output_format any_format(record_maker& make) {
  output_format format = make.one_in(2) ? csv_format() : padded_format();
  static const char* const separators[] = {" | ", ",", "|", "\t", "; ", ""};
  if (make.one_in(2)) format.csv_separator = separators[make.below(std::size(separators))];
  if (make.one_in(3)) format.separator_char = "\0|,v"[make.below(4)];
  if (make.one_in(4)) format.no_whitespace = make.one_in(2);
  format.quoted_fields = make.one_in(4);
  format.pad_fields = !make.one_in(3);
  format.base16 = make.one_in(2);
  format.pair_datetime = make.one_in(4);
  if (make.one_in(5)) format.alias_paths = {{"/cases", "E:,"}};
  return format;
}

// The tables of several logs, which share shapes unless what was shared has been dropped.
TEST(fast_and_plain, agree_on_generated_tables) {
  for (unsigned seed = 1; seed <= 300; ++seed) {
    record_maker make(seed);
    output_format format = any_format(make);
    write_context context{.inc_slack = make.one_in(2), .show_offsets = make.one_in(2)};
    record_container records;
    output_memory memory;
    for (int log = 0; log < 3; ++log) {
      for (std::size_t i = 0, count = 1 + make.below(12); i < count; ++i) {
        make.record().add_to(records);
      }
      context.log = make.log();
      const std::string plain = plain_text(records, format, context);
      std::ostringstream out;
      write_records(out, records, format, context, memory);
      ASSERT_EQ(out.str(), plain) << "seed " << seed << " log " << log;
      make.one_in(4) ? records.clear() : records.clear_records();
    }
  }
}

// Rows across the end of the buffer, values larger than it, and more shapes than plans are kept.
TEST(fast_and_plain, agree_on_large_tables) {
  record_container records;
  for (std::size_t i = 0; i < 900; ++i) {
    test_record record(1, {{"A", std::string(i * 37 % 9000, 'a')}, {"B", "x,y"}});
    if (i > 890 && i % 4 == 3) record.fields[0].value.assign(400'000, i % 8 == 3 ? ',' : 'b');
    const std::string own = std::string("C").append(std::to_string(i));
    record.fields.push_back({own, std::string(i % 3 ? 20 : 30'000, 'c'), true});
    // Short cells after a long one, which need the room that there was when the row began.
    for (char c = 'a'; c <= 'z'; ++c) record.fields.push_back({{c}, std::string(60, c)});
    record.add_to(records);
  }
  for (output_format format : {csv_format(), padded_format()}) {
    const std::string plain = plain_text(records, format, {});
    std::ostringstream out;
    output_memory memory;
    write_records(out, records, format, {}, memory);
    ASSERT_TRUE(out.str() == plain);
  }
}

}  // namespace
}  // namespace zanvik
