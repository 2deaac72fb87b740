// The result of the option passes for a command line.
#include <gtest/gtest.h>

#include <limits>
#include <string>

#include "run/evt_output_options.h"
#include "scratch_dir.h"

namespace zanvik {
namespace {

using testing::file_text;
using testing::scratch_dir;

constexpr std::uint64_t all_ones = std::numeric_limits<std::uint64_t>::max();

// Parses the words after a program name; unknown words are left in it.
struct parsed {
  explicit parsed(argument_list words) : list(std::move(words)) {
    list.insert(list.begin(), "/bin/zanvik.real");
    goes_on = options.parse_log_options(list, "ver: 0.65", "title");
  }
  argument_list list;
  evt_output_options options;
  bool goes_on = false;
};

// The shape of results in short: form, separator, its character and substitute, three flags.
std::string shape(const output_format& format) {
  std::string text;
  if (format.output_csv) text += "csv ";
  if (format.output_csvgen) text += "csvgen ";
  if (format.output_l2t) text += "l2t ";
  if (format.output_bodyfile) text += "bodyfile ";
  if (format.output_xml) text += "xml ";
  if (format.output_multiline) text += "multiline ";
  const auto character = [](char c) { return c == 0 ? std::string("0") : std::string(1, c); };
  text += "[" + format.csv_separator + "] " + character(format.separator_char) +
          character(format.separator_substitute);
  if (format.no_whitespace) text += " tight";
  if (!format.pad_fields) text += " unpadded";
  if (!format.row_form) text += " no rows";
  return text;
}

TEST(options, shape_of_results) {
  const std::tuple<const char*, argument_list, const char*> rows[] = {
      {"default", {}, "csv [ | ] |;"},
      {"any case", {"-CSV"}, "csv [,] ,; tight"},
      {"paired date and time keep the blanks", {"-csv", "-pair_datetime"}, "csv [,] ,;"},
      {"bodyfile beats csv in either order", {"-bodyfile", "-csv"}, "bodyfile [|] |; tight"},
      {"bodyfile beats l2t", {"-csvl2t", "-bodyfile"}, "bodyfile [|] |;"},
      {"multiline beats all", {"-multiline", "-xml", "-csvgen"}, "multiline [] 00 tight"},
      {"xml has no rows", {"-xml"}, "xml [] 00 no rows"},
      {"tab in any case", {"-csv_separator", "TAB"}, "csv [\t] 00"},
      {"tab as an escape", {"-csv_separator", "\\t"}, "csv [\t] 00"},
      {"a comma becomes a semicolon", {"-csv_separator", ","}, "csv [,] ,;"},
      {"a bar before a comma", {"-csv_separator", ",|"}, "csv [,|] |;"},
      {"no blanks where nothing is padded",
       {"-csv", "-csv_separator", " ; \t"},
       "csv [;\t] 00 tight"},
      {"another text replaces nothing", {"-csv_separator", "~"}, "csv [~] 00"},
      {"no blanks", {"-no_whitespace"}, "csv [|] |; tight unpadded"},
      {"quoted", {"-enable_quoted_csv_fields"}, "csv [|] 0; unpadded"},
      {"quoting keeps a tab whole",
       {"-csv_separator", " \t", "-enable_quoted_csv_fields"},
       "csv [ \t] 00 unpadded"},
  };
  for (const auto& [reason, words, expected] : rows) {
    const parsed line(words);
    EXPECT_TRUE(line.goes_on) << reason;
    EXPECT_EQ(shape(line.options.format), expected) << reason;
  }
}

TEST(options, formats_are_taken_by_their_length) {
  const std::tuple<argument_list, const char*, unsigned> rows[] = {
      {{"-dateformat", "MM/DD/YY"}, "mm/dd/yy hh:mm:ss.xxx", 3},
      {{"-dateformat", "dd-mmm-yyyy"}, "yyyy-mm-dd hh:mm:ss.xxx", 3},  // 11 characters
      {{"-timeformat", "hh:mm:ss.xxxxxxxxx"}, "yyyy-mm-dd hh:mm:ss.xxxxxxxxx", 9},
      {{"-timeformat", "hh:mm:ss.xxxxxxxxxxxx"}, "yyyy-mm-dd hh:mm:ss.xxx", 3},
      {{"-timeformat", "hh-mm-ss"}, "yyyy-mm-dd hh:mm:ss.xxx", 3},  // no colon
  };
  for (const auto& [words, formats, digits] : rows) {
    const parsed line(words);
    const output_format& found = line.options.format;
    EXPECT_EQ(found.date_format + " " + found.time_format, formats) << words[1];
    EXPECT_EQ(found.descriptor.fraction_digits(), digits) << words[1];
  }
}

TEST(options, event_ids_are_a_list_with_one_separator) {
  const std::tuple<const char*, argument_list, std::vector<std::uint64_t>> rows[] = {
      {"any", {}, {all_ones}},
      {"bars", {"-eventid", "o17|0x10"}, {15, 16}},
      {"blanks", {"-eventid", "1 2"}, {1, 2}},
      {"a comma is looked for first", {"-eventid", "1, 2|3"}, {1, 2}},
      {"what does not read is left out", {"-eventid", "a,5"}, {5}},
      {"nothing that reads selects nothing", {"-eventid", "a"}, {}},
      {"only the first option counts", {"-eventid", "1", "-eventid", "2"}, {1}},
  };
  for (const auto& [reason, words, event_ids] : rows) {
    EXPECT_EQ(parsed(words).options.selection.event_ids, event_ids) << reason;
  }
}

TEST(options, record_times_are_utc_and_bad_ones_are_passed_over) {
  constexpr std::uint64_t march_first = 129750336000000000;  // 2012-03-01 00:00 UTC
  const parsed line({"-start_time", "03/01/2012", "-stop_time", "3/1/12 00:00:01"});
  EXPECT_EQ(line.options.selection.start_time, march_first);
  EXPECT_EQ(line.options.selection.stop_time, march_first + 10'000'000);
  EXPECT_EQ(parsed({"-stop_time", "13/45/2012"}).options.selection.stop_time, all_ones);
}

TEST(options, record_numbers_open_a_range) {
  const parsed stop({"-rec_stop", "9"});
  EXPECT_TRUE(stop.options.selection.record_range_on);
  EXPECT_EQ(stop.options.selection.record_stop, 9u);
  const parsed start({"-rec_start", "0x100000000", "-rec_id", "7|9"});
  EXPECT_EQ(start.options.selection.record_start, 0x100000000u);
  EXPECT_EQ(start.options.selection.record_stop, all_ones);
  EXPECT_EQ(start.options.selection.record_ids, (std::vector<std::uint64_t>{7, 9}));
}

TEST(options, reports_and_a_command_file_end_the_plain_listing) {
  const parsed plain({"-allparams"});
  EXPECT_TRUE(plain.options.all_records);
  EXPECT_FALSE(plain.options.allparams) << "counts with -bodyfile only";
  EXPECT_EQ(plain.list.size(), 2u);
  const parsed reports({"-usb", "-PW", "-bodyfile", "-allparams"});
  EXPECT_FALSE(reports.options.all_records);
  EXPECT_TRUE(reports.options.reports.pw && reports.options.reports.usb);
  EXPECT_FALSE(reports.options.reports.time || reports.options.reports.partition_metadata);
  EXPECT_TRUE(reports.options.allparams);
  EXPECT_FALSE(parsed({"-cmdfile", "f"}).options.all_records);
}

TEST(options, fields_to_count_need_a_statistics_file) {
  EXPECT_TRUE(parsed({"-hist", "a|b"}).options.hist_fields.empty());
  const parsed line({"-hist", "a | b", "-stats", "f"});
  EXPECT_TRUE(line.options.stats_on);
  EXPECT_EQ(line.options.hist_fields, (std::vector<std::string>{"a", "b"}));
}

TEST(options, aliases_come_in_pairs) {
  const parsed line({"-alias", "C:\\A.evtx | one", "-aliaspath", "/Logs/|/shown/|\"\"|all"});
  EXPECT_EQ(line.options.format.alias_files,
            (std::map<std::string, std::string>{{"c:\\a.evtx", "one"}}));
  EXPECT_EQ(line.options.format.alias_paths,
            (std::map<std::string, std::string>{{"/logs", "/shown"}, {"*", "all"}}));
  EXPECT_FALSE(parsed({"-alias", "a|b|c"}).goes_on);
  EXPECT_FALSE(parsed({"-aliaspath", "a"}).goes_on);
}

TEST(options, words_without_meaning_are_swallowed_with_their_values) {
  const parsed line({"-gzip", "-threads", "-zlibex", "-cpu", "4", "-separate_files", "-outdir",
                     "-pipe", "-verbose", "-v", "word", "-quiet", "-hostname", "h"});
  EXPECT_EQ(line.list, (argument_list{"/bin/zanvik.real", "-v", "word"}));
  EXPECT_FALSE(line.options.walk.pipe) << "it was the value of another option";
  EXPECT_EQ(parsed({"-cpu"}).list.size(), 2u) << "in the last place it has no value, and stays";
  EXPECT_FALSE(line.options.show_status);
  EXPECT_EQ(line.options.program_name, "zanvik");
}

TEST(options, the_results_file_is_probed_and_gone) {
  const scratch_dir scratch;
  const std::string path = scratch.write("old.txt", "earlier results");
  EXPECT_TRUE(parsed({"-append", "-out", path}).goes_on);
  EXPECT_EQ(::access(path.c_str(), F_OK), -1) << "-append saves nothing";
  EXPECT_TRUE(parsed({"-append", "-outfile", path}).goes_on);
  EXPECT_TRUE(parsed({"-out", "/dev/null"}).goes_on);
  EXPECT_EQ(::access("/dev/null", F_OK), 0) << "what is no file stays";
  EXPECT_EQ(parsed({"-out", "/dev\\null"}).options.out_file, "/dev/null");
  EXPECT_FALSE(parsed({"-out", scratch.path("no/folder")}).goes_on);
  EXPECT_FALSE(parsed({"-out", ""}).goes_on);
}

TEST(options, the_trace_begins_with_the_command_line) {
  const scratch_dir scratch;
  const std::string path = scratch.path("trace");
  const parsed line({"-diags", path, "-l3", "a b"});
  EXPECT_EQ(line.options.trace.diag_level, 3);
  EXPECT_EQ(file_text(path), "->/bin/zanvik.real -diags " + path + " -l3 \"a b\"\n");
  EXPECT_EQ(parsed({"-l3", "-l2"}).options.trace.diag_level, 2);
  const parsed lost({"-diags", scratch.path("no/folder")});
  EXPECT_TRUE(lost.goes_on);
  EXPECT_FALSE(lost.options.trace.diags_on);
}

}  // namespace
}  // namespace zanvik
