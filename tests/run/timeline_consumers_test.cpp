// The timelines as read by other people's programs: `mactime` of The Sleuth Kit and Python's csv
// module. A test whose tool is missing is skipped and says so.
//
// The logs are those of samples/, one made here of values that are difficult for readers of rows,
// and, if the environment names a folder in ZANVIK_LOGS, all logs below it.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

#include "log_builder.h"
#include "program_run.h"
#include "value_builder.h"

namespace zanvik::testing {
namespace {

bool have(const std::string& tool) {
  return std::system(("command -v " + tool + " >/dev/null 2>&1").c_str()) == 0;
}
#define NEED_TOOL(tool, package)                             \
  if (!have(tool))                                           \
  GTEST_SKIP() << tool " is not installed (package " package \
                       "): nothing was "                     \
                       "read"

// Runs a shell command in UTC; fails the test if it fails or writes to standard error.
std::string output_of(const scratch_dir& scratch, const std::string& command) {
  const std::string out = scratch.path("tool.out"), err = scratch.path("tool.err");
  const int status = std::system(("TZ=UTC LC_ALL=C " + command + " >" + out + " 2>" + err).c_str());
  EXPECT_EQ(status, 0) << command;
  EXPECT_EQ(file_text(err), "") << command;
  return file_text(out);
}

// Values with every mark that readers of rows use, and none that the forms cannot keep.
constexpr const char* hard_values[] = {"say \"yes, please\"",
                                       "\"quoted\"",
                                       "\"",
                                       "one\r\ntwo\r\nthree",
                                       "line\n",
                                       "a,b,,c",
                                       "a|b||c",
                                       "'",
                                       "{\"k\":\"v,w\"}",
                                       "\\"};

std::string hard_log(const scratch_dir& scratch) {
  chunk_builder chunk;
  std::uint64_t number = 1;
  for (const char* value : hard_values) {
    event made;
    made.provider = "Fabrikam, \"Test\"|Suite";
    made.data = {{"first", slot::utf16(value)}, {"comma,bar|", slot::utf16(value)}};
    chunk.add(record(number++, made));
  }
  log_builder().chunk(chunk).write(scratch.path("hard.evtx"));
  return scratch.path("hard.evtx");
}

std::vector<std::string> logs_at_hand(const scratch_dir& scratch) {
  std::vector<std::string> logs{hard_log(scratch)};
  std::vector<std::string> folders{ZANVIK_SOURCE_DIR "/samples"};
  if (const char* more = std::getenv("ZANVIK_LOGS")) folders.push_back(more);
  for (const std::string& folder : folders) {
    for (const auto& entry : std::filesystem::recursive_directory_iterator(folder)) {
      const std::string end = entry.path().extension().string();
      if (end == ".evtx" || end == ".evt" || end == ".Evt") logs.push_back(entry.path().string());
    }
  }
  return logs;
}

// mactime shows equal lines once.
void sort_unique(std::vector<std::string>& lines) {
  std::sort(lines.begin(), lines.end());
  lines.erase(std::unique(lines.begin(), lines.end()), lines.end());
}

// "2013-01-01 02:00:00Z Event ID: 7-P" for each line of the log's timeline: what mactime must show
// for the body file, computed from the other form.
std::vector<std::string> expected_names(const std::string& log) {
  std::vector<std::string> names;
  const auto run = run_zanvik(
      {"-log", log, "-csvl2t", "-quiet", "-csv_separator", "tab", "-timeformat", "hh:mm:ss"});
  for (const std::string& line : lines_of(run.out)) {
    const auto cells = split(line, '\t');
    if (cells.size() < 10 || cells[0] == "date") continue;
    std::string name = cells[9];
    if (const auto at = name.find(" : "); at != name.npos) name.replace(at, 3, "-");
    std::replace(name.begin(), name.end(), '|', ';');
    names.push_back(cells[0] + cells[1] + "Z " + name);
  }
  sort_unique(names);
  return names;
}

// The content of a field that a CSV writer has put in quotes.
std::string unquoted(const std::string& field) {
  std::string text;
  for (std::size_t i = 1; i + 1 < field.size(); ++i) {
    text += field[i];
    if (field[i] == '"') ++i;  // the second of a pair
  }
  return text;
}

TEST(timeline_consumers, mactime_gives_every_body_line_its_time_and_name) {
  NEED_TOOL("mactime", "sleuthkit");
  const scratch_dir scratch;
  std::size_t total = 0;
  for (const std::string& log : logs_at_hand(scratch)) {
    const auto run = run_zanvik({"-log", log, "-bodyfile", "-quiet"});
    const std::string body = scratch.write("body", run.out);
    std::vector<std::string> names;
    for (const std::string& line :
         lines_of(output_of(scratch, "mactime -y -d -z UTC -b " + body))) {
      // Date,Size,Type,Mode,UID,GID,Meta,"Name", the date as 2013-01-01T02:00:00Z.
      const auto cells = split(line, ',');
      if (cells.size() < 8 || cells[0] == "Date") continue;
      EXPECT_EQ(cells[2], "macb") << line;
      std::string time = cells[0];
      std::replace(time.begin(), time.end(), 'T', ' ');
      names.push_back(time + ' ' + unquoted(line.substr(line.find(",\"") + 1)));
    }
    sort_unique(names);
    EXPECT_EQ(names, expected_names(log)) << log;
    total += names.size();
  }
  EXPECT_GT(total, 0u);
}

// Reads a timeline as CSV, after the line that says how it was made and the empty one, and prints
// for each row its number of columns, the last one, and "desc".
const char read_csv[] = R"(import csv, sys
with open(sys.argv[1], newline="", encoding="utf-8", errors="surrogateescape") as rows:
    for row in list(csv.reader(rows))[2:]:
        print(len(row), row[-1], ascii(row[10]) if len(row) > 10 else "", sep="\t")
)";

TEST(timeline_consumers, python_gets_hard_values_as_far_as_the_form_keeps_them) {
  NEED_TOOL("python3", "python3");
  const scratch_dir scratch;
  const std::string csv =
      scratch.write("l2t.csv", run_zanvik({"-log", hard_log(scratch), "-csvl2t", "-quiet"}).out);
  const auto rows =
      lines_of(output_of(scratch, "python3 " + scratch.write("read.py", read_csv) + ' ' + csv));
  // As a Python literal without its quotes. This form replaces commas; collected columns have a
  // colon for a line end.
  const char* const kept[] = {
      "say \"yes; please\"", "\"quoted\"", "\"", "one:two:three", "line:", "a;b;;c", "a|b||c", "'",
      "{\"k\":\"v;w\"}",     "\\\\"};
  ASSERT_EQ(rows.size(), 1 + std::size(kept));
  for (std::size_t i = 0; i < std::size(kept); ++i) {
    const std::string value = kept[i];
    EXPECT_NE(rows[i + 1].find("[02:comma;bar|:" + value + "]"), std::string::npos) << rows[i + 1];
    EXPECT_NE(rows[i + 1].find("[01:first:" + value + "]"), std::string::npos) << rows[i + 1];
  }
}

}  // namespace
}  // namespace zanvik::testing
