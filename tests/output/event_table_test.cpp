// Tables, their expected lines written by hand.
#include <gtest/gtest.h>

#include <algorithm>

#include "output/tables/row_writer.h"
#include "record_tables.h"

namespace zanvik {
namespace {

const char csv_head[] = "Record#,EventID,Date, Time-UTC,Level (translated),Provider Name,";
const char csv_row[] = "7,1,2013-01-01, 02:00:00.000,info,P,";
const test_field channel{"Channel", "Sys", true};

// The table stays padded, and the date alone takes the width of the pair.
TEST(event_table, csv_with_pair_datetime_is_padded) {
  output_format format = csv_format();
  format.no_whitespace = false;
  format.pair_datetime = true;
  EXPECT_EQ(table_text({test_record(1, {channel})}, format),
            line(",", {" Record#  ", " EventID  ", "Date [UTC]             ", "Level (translated)",
                       "Provider Name", "Channel", " event log "}) +
                line(",", {"         7", "         1", " 2013-01-01              02:00:00.000",
                           "info              ", "P            ", "Sys    ", "System.evtx"}));
}

TEST(event_table, quoted_texts_and_bare_numbers) {
  output_format format = csv_format();
  format.quoted_fields = true;
  format.pad_fields = false;
  const std::vector<test_field> fields = {
      {"a", "x,y"}, {"b", "{\"k\":1}"}, {"c", "{\""}, {"d", "say \"hi\"", true}, {"e", ""}};
  EXPECT_EQ(
      table_text({test_record(1, fields), test_record(1)}, format),
      "Record#,EventID,Date,Time-UTC,Level (translated),Provider Name,a,b,c,d,e,event log\n"
      "7,1,2013-01-01,02:00:00.000,\"info\",\"P\",\"x,y\",{\"k\":1},\"{\"\",\"say \"hi\"\","
      "\"\",\"System.evtx\"\n"
      "7,1,2013-01-01,02:00:00.000,\"info\",\"P\",\"\",\"\",\"\",\"\",\"\",\"System.evtx\"\n");
}

// The text after the odd run appears twice, including a closing quote.
TEST(event_table, lf_cr_lf_leaves_a_raw_line_feed) {
  const std::vector<test_record> given = {test_record(1, {{"a", "x\n\r\n"}})};
  output_format quoted = csv_format();
  quoted.quoted_fields = true;
  EXPECT_NE(table_text(given, csv_format()).find(",x[LFCR]\n[CRLF],"), std::string::npos);
  EXPECT_NE(table_text(given, quoted).find(",\"x[LFCR]\n\"[CRLF]\","), std::string::npos);
}

TEST(event_table, tab_separated_values_keep_commas_and_bars) {
  output_format format = csv_format();
  format.csv_separator = "\t";
  format.separator_char = format.separator_substitute = 0;
  EXPECT_EQ(table_text({test_record(1, {{"a", "x,y|z"}})}, format),
            "Record#\tEventID\tDate\t Time-UTC\tLevel (translated)\tProvider Name\ta\tevent log\n"
            "7\t1\t2013-01-01\t 02:00:00.000\tinfo\tP\tx,y|z\tSystem.evtx\n");
}

// Of 3,000 names in one of 2,049 records, 2,047 stay, and the one that all others have. A table of
// few records keeps all names. A padded one is not padded beyond its limit.
TEST(event_table, columns_of_the_fewest_records_are_left_out) {
  std::vector<test_record> given(2048, test_record(1, {{"zz", "last"}}));
  std::vector<test_field> many;
  for (int i = 0; i < 3000; ++i) many.push_back({"f" + std::to_string(10000 + i), "v"});
  given.push_back(test_record(1, many));
  std::string csv = table_text(given, csv_format());
  const auto commas = [&csv](std::size_t line_end) {
    return std::count(csv.begin(), csv.begin() + static_cast<std::ptrdiff_t>(line_end), ',');
  };
  const std::size_t head = csv.find('\n');
  EXPECT_EQ(commas(head), 6 + 2048);
  EXPECT_EQ(csv.substr(head - 27, 27), ",f12045,f12046,zz,event log");
  EXPECT_EQ(commas(csv.size()), 2050 * commas(head)) << "each row has as many cells";
  for (std::size_t i = 0; i < many.size(); ++i) many[i].value.assign(100, 'v');
  given = {given.front(), test_record(1, many)};
  csv = table_text(given, csv_format());
  EXPECT_EQ(commas(csv.find('\n')), 6 + 3001);
  const std::string padded = table_text(given, padded_format());
  EXPECT_LT(padded.find('\n', padded.find("last")) - padded.rfind('\n', padded.find("last")),
            65536u + 3 * 3010 + 200);
}

TEST(event_table, base16_reaches_the_offset_alone) {
  output_format format = csv_format();
  format.base16 = true;
  const write_context context{.inc_slack = true, .show_offsets = true};
  EXPECT_EQ(table_text({test_record(0x2'0010).number(4096),
                        test_record(0x2'0010).flags(record_plain_or_slack)},
                       format, context),
            "Record#,EventID,Date, Time-UTC,rec offset,del,Level (translated),Provider Name,event "
            "log\n"
            "4096,16,2013-01-01, 02:00:00.000,0x1200,,info,P,System.evtx\n"
            "7,16,2013-01-01, 02:00:00.000,0x1200,*,info,P,System.evtx\n");
}

// The dropped column takes a cell in a record that lacks it: all later ones move to the right.
TEST(event_table, a_missing_dropped_field_shifts_the_row) {
  const std::vector<test_record> given = {
      test_record(1, {{"A", "1"}, {"EventID", "77"}, {"Provider Name", "P"}, {"Z", "9"}}),
      test_record(1, {{"A", "2"}, {"EventID", "78"}, {"Z", "8"}}),
      test_record(1, {{"A", "3"}, {"Z", "7"}}),
      test_record(1, {{"EventID", "79"}, {"Provider Name", "P"}})};
  EXPECT_EQ(table_text(given, csv_format()),
            std::string(csv_head) + "A,EventID,Z,event log\n" +  //
                csv_row + "1,77,9,System.evtx\n" +               //
                csv_row + "2,78,,8\n" +                          //
                csv_row + "3,,,7\n" +                            //
                csv_row + ",79,,System.evtx\n");
  const std::string slack_row = "7,1,2013-01-01, 02:00:00.000,,info,P,";
  EXPECT_EQ(table_text(given, csv_format(), {.inc_slack = true}),
            "Record#,EventID,Date, Time-UTC,del,Level (translated),Provider Name,A,Z,event log\n" +
                slack_row + "1,9,System.evtx\n" +  //
                slack_row + "2,,8\n" +             //
                slack_row + "3,,\n" +              // two are missing: not even Z has room
                slack_row + ",,System.evtx\n");
}

TEST(event_table, anomalous_records_take_the_names_of_the_first_ordinary_one) {
  const auto cut = [](std::vector<test_field> fields) {
    return test_record(1, std::move(fields)).flags(record_cut | record_inside_range);
  };
  const test_record plain(1, {{"A", "1"}, {"B", "2"}});
  const test_record bare(1);
  const std::tuple<const char*, std::vector<test_record>, const char*, std::vector<const char*>>
      cases[] = {
          {"same count of fields", {cut({{"x", "8"}, {"y", "9"}}), plain}, "A,B", {"8,9", "1,2"}},
          {"other count: unknown names get no column",
           {plain, cut({{"B", "7"}, {"x", "8"}, {"y", "9"}})},
           "A,B",
           {"1,2", ",7"}},
          {"no ordinary record", {cut({{"x", "8"}}), cut({{"y", "9"}})}, "x,y", {"8,", ",9"}},
          {"no ordinary record with a field", {bare, cut({{"x", "8"}})}, "x", {"", "8"}},
          {"plain or in range is ordinary",
           {plain, test_record(1, {{"C", "3"}, {"D", "4"}}).flags(record_plain_or_slack)},
           "A,B,C,D",
           {"1,2,,", ",,3,4"}},
      };
  for (const auto& [reason, given, columns, rows] : cases) {
    std::string expected = std::string(csv_head) + columns + ",event log\n";
    for (const char* row : rows) expected += std::string(csv_row) + row + ",System.evtx\n";
    EXPECT_EQ(table_text(given, csv_format()), expected) << reason;
  }
}

TEST(event_table, records_out_of_range_are_hidden_and_the_header_stays) {
  const std::vector<test_record> given = {test_record(1, {{"A", "1"}}).flags(record_outside_range)};
  EXPECT_EQ(table_text(given, csv_format()), std::string(csv_head) + "A,event log\n");
  EXPECT_EQ(table_text(given, csv_format(), {.inc_slack = true}),
            "Record#,EventID,Date, Time-UTC,del,Level (translated),Provider Name,A,event log\n"
            "7,1,2013-01-01, 02:00:00.000,*,info,P,1,System.evtx\n");
}

TEST(event_table, legacy_records_have_no_provider_column) {
  EXPECT_EQ(table_text({test_record(528, {{"source name", "S"}}).legacy(16),
                        test_record(528, {{"source name", "S"}}).legacy(8)},
                       csv_format()),
            "Record#,EventID,Date, Time-UTC,Level (translated),source name,event log\n"
            "7,528,2013-01-01, 02:00:00.000,unk,S,System.evtx\n"
            "7,528,2013-01-01, 02:00:00.000,a-pass,S,System.evtx\n");
}

TEST(event_table, a_count_that_is_no_time_gives_blanks) {
  output_format pair = csv_format();
  pair.pair_datetime = true;
  const std::vector<test_record> given = {test_record(1).time(0)};
  EXPECT_NE(table_text(given, csv_format()).find("\n7,1,, ,info,"), std::string::npos);
  EXPECT_NE(table_text(given, pair).find("\n7,1, ,info,"), std::string::npos);
  EXPECT_NE(table_text(given, padded_format())
                .find("\n         7 |          1 |            |               | info"),
            std::string::npos);
}

TEST(event_table, widths) {
  const std::string name25(25, 'n'), name600(600, 'l'), name601(601, 'm');
  const std::tuple<const char*, test_record, std::string, std::string> cases[] = {
      {"a name wider than its values", test_record(1, {{name25, "v"}}), name25,
       "v" + std::string(24, ' ')},
      {"599 bytes count", test_record(1, {{"f", std::string(599, 'v')}}),
       "f" + std::string(598, ' '), std::string(599, 'v')},
      {"600 bytes do not", test_record(1, {{"f", std::string(600, 'v')}}), "f",
       std::string(600, 'v')},
      {"a name of 600", test_record(1, {{name600, "v"}}), name600, "v" + std::string(599, ' ')},
      {"a name over 600 gives 20", test_record(1, {{name601, "v"}}), name601,
       "v" + std::string(19, ' ')},
      {"a literal counts", test_record(1, {{"f", "vvvv", true}}), "f   ", "vvvv"},
      {"a mark does not", test_record(1, {{"f", "a\r\nb"}}), "f   ", "a[CRLF]b"},
  };
  for (const auto& [reason, record, header_end, row_end] : cases) {
    const std::string text = table_text({record}, padded_format());
    EXPECT_NE(text.find(" | " + header_end + " |  event log \n"), std::string::npos) << reason;
    EXPECT_NE(text.find(" | " + row_end + " | System.evtx\n"), std::string::npos) << reason;
  }
}

TEST(event_table, captions) {
  const std::string two = table_text({test_record(1).caption("pw")}, padded_format());
  EXPECT_NE(two.find("| name | Provider Name |"), std::string::npos);  // never below 4
  EXPECT_NE(two.find("| pw   | P "), std::string::npos);
  const std::string six = table_text({test_record(1).caption("logon!")}, padded_format());
  EXPECT_NE(six.find("|  name  | Provider Name |"), std::string::npos);
  // Those of damaged records do not count.
  const test_record damaged = test_record(1).caption("longer").flags(record_cut);
  EXPECT_EQ(table_text({damaged}, csv_format()).find("name"), std::string::npos);
}

// 1,000 kinds of records with 1,000 columns together: what is computed for their rows would need 60
// MB, and is dropped with its memory each time it reaches 16 MiB.
TEST(event_table, row_plans_give_their_memory_back) {
  record_container records;
  for (int i = 0; i < 1000; ++i) {
    const std::string name = std::string(54, 'n') + std::to_string(10000 + i);
    test_record(1, {{name, "v"}}).add_to(records);
  }
  std::ostream nowhere(nullptr);
  row_buffer out(nowhere);
  const output_format format = padded_format();
  const write_context context;
  time_cells times(format);
  table_cache tables;
  table_plan& table = tables.plan_for(records.in_time_order(), format, context);
  row_writer rows(out, times, table.layout, table.rows, format, context);
  for (const LogRecord* record : records.in_time_order()) rows.write(*record);
  std::size_t held = 0;
  for (const row_plan& plan : table.rows.plans) held += plan.text.capacity();
  EXPECT_GT(held, table.rows.bytes / 2) << "the plans of the last records are there";
  EXPECT_LT(held, std::size_t{36} << 20);
}

}  // namespace
}  // namespace zanvik
