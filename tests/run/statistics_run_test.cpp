// Whole runs with -stats and -hist.
#include <gtest/gtest.h>

#include <algorithm>
#include <charconv>
#include <filesystem>
#include <sstream>

#include "log_builder.h"
#include "program_run.h"

namespace zanvik::testing {
namespace {

// Runs the program with -stats and gives the statistics file's text.
std::string statistics_of(std::vector<std::string> args, const std::string& input = "") {
  const scratch_dir scratch;
  const std::string path = scratch.path("stats");
  args.insert(args.end(), {"-quiet", "-out", scratch.path("out"), "-stats", path});
  EXPECT_EQ(run_zanvik(args, {.input = input}).status, 0);
  return file_text(path);
}

std::vector<std::string> lines_of(const std::string& text) {
  std::vector<std::string> lines;
  std::istringstream in(text);
  for (std::string line; std::getline(in, line);) lines.push_back(line);
  return lines;
}

// What stands behind `head` in each line that begins with it.
std::vector<std::string> lines_behind(const std::string& text, const std::string& head) {
  std::vector<std::string> found;
  for (const std::string& line : lines_of(text)) {
    if (line.starts_with(head)) found.push_back(line.substr(head.size()));
  }
  return found;
}

// The totals of all blocks, 0 for a log without records.
std::vector<std::uint64_t> totals_of(const std::string& statistics) {
  std::vector<std::uint64_t> totals;
  for (const std::string& line : lines_of(statistics)) {
    if (line.starts_with("No events found in log")) totals.push_back(0);
    if (!line.starts_with("     all | ")) continue;
    const auto digits = line.find_first_not_of(' ', 11);
    std::from_chars(line.data() + digits, line.data() + line.size(), totals.emplace_back());
  }
  return totals;
}

TEST(statistics_run, real_logs_hold_as_many_records_as_are_written_down) {
  const auto logs = std::filesystem::path(ZANVIK_SOURCE_DIR).parent_path() / "shared" / "logs";
  if (!std::filesystem::exists(logs / "SOURCES.md")) {
    GTEST_SKIP() << "there are no real logs beside the source folder";
  }
  // Rows such as: | `win7/Security.evtx` | 2,261 |
  std::size_t counted = 0;
  for (const std::string& line : lines_of(file_text((logs / "SOURCES.md").string()))) {
    const auto name_end = line.find("` | ");
    if (!line.starts_with("| `") || name_end == line.npos) continue;
    std::string digits = line.substr(name_end + 4);
    std::erase(digits, ',');
    if (digits.empty() || digits[0] < '0' || digits[0] > '9') continue;
    const std::string name = line.substr(3, name_end - 3);
    const auto totals = totals_of(statistics_of({"-log", (logs / name).string()}));
    EXPECT_EQ(totals, std::vector<std::uint64_t>{std::stoull(digits)}) << name;
    ++counted;
  }
  EXPECT_EQ(counted, 33u);
}

// Two logs and a file that is none, by rising name.
struct three_files {
  three_files() {
    log_builder().chunk({record(1), record(2)}).write(scratch.path("a.evtx"));
    log_builder()
        .chunk({record(1, {.event_id = 7}), record(2), record(3)})
        .write(scratch.path("b.evtx"));
  }
  std::string path(const char* name) const { return scratch.path(name); }
  scratch_dir scratch;
};

TEST(statistics_run, a_block_a_log_or_the_last_one) {
  const three_files files;
  const std::string a = files.path("a.evtx");
  const std::string b = files.path("b.evtx");
  using names = std::vector<std::string>;
  using counts = std::vector<std::uint64_t>;
  const std::string piped = statistics_of({"-pipe"}, b + "\n" + a + "\n");
  EXPECT_EQ(lines_behind(piped, "log: "), (names{b, a})) << "names on standard input, in order";
  EXPECT_EQ(totals_of(piped), (counts{3, 2}));
  const std::string listed = statistics_of({"-log", b + "|" + a});
  EXPECT_EQ(lines_behind(listed, "log: "), names{b}) << "a list is walked by rising path";
  EXPECT_EQ(totals_of(listed), counts{3});
}

TEST(statistics_run, selection_does_not_matter_and_slack_counts) {
  const scratch_dir scratch;
  const std::string path = scratch.path("a.evtx");
  log_builder()
      .chunk(chunk_builder({record(1), record(2, {.event_id = 7}), record(9000)})
                 .declare(1, 3)
                 .slack(record(5)))
      .write(path);
  const struct {
    const char* reason;
    std::vector<std::string> args;
    std::uint64_t total;
  } rows[] = {
      {"a hidden record counts", {}, 3},
      {"one event", {"-eventid", "7"}, 3},
      {"none at all", {"-eventid", "65000"}, 3},
      {"records from slack count when they are looked for", {"-inc_slack"}, 4},
  };
  for (const auto& row : rows) {
    auto args = row.args;
    args.insert(args.end(), {"-log", path});
    EXPECT_EQ(totals_of(statistics_of(args)), std::vector<std::uint64_t>{row.total}) << row.reason;
  }
  log_builder().chunk(chunk_builder()).write(path);
  EXPECT_EQ(totals_of(statistics_of({"-log", path})), std::vector<std::uint64_t>{0});
}

TEST(statistics_run, combinations_of_fields_by_the_names_of_columns) {
  const std::string log = std::string(ZANVIK_SOURCE_DIR) + "/samples/security.evtx";
  const auto rows = [&](const std::string& fields, std::vector<std::string> more) {
    more.insert(more.end(), {"-log", log, "-hist", fields});
    const std::string text = statistics_of(more);
    const auto at = text.find("--- filter stats ---");
    std::vector<std::string> found;
    if (at == text.npos) return found;
    const auto lines = lines_of(text.substr(at));
    for (std::size_t i = 2; i < lines.size() && !lines[i].empty(); ++i) {
      // Event ID, count and key values.
      const std::string& line = lines[i];
      std::string name = line.substr(0, 22);
      std::erase(name, ' ');
      const auto keys = lines[1].find("key values");
      std::string key = line.substr(keys, line.find(" | ", keys) - keys);
      key.erase(0, key.find_first_not_of(' '));
      found.push_back(name + "|" + key);
    }
    return found;
  };
  using strings = std::vector<std::string>;
  // The eleven logons that the sample is made of: services, a console, the network, desktops.
  EXPECT_EQ(rows("09:LogonType", {"-eventid", "4624"}),
            (strings{"4624|2|10", "4624|2|2", "4624|4|3", "4624|3|5"}));
  EXPECT_EQ(rows("09:logontype", {"-eventid", "4624"}).size(), 4u) << "in another case";
  EXPECT_EQ(rows("LogonType", {"-eventid", "4624"}), strings{}) << "not without the number";
  EXPECT_EQ(rows("09:LogonType|no such", {"-eventid", "4624"}), strings{}) << "one is missing";
  EXPECT_EQ(rows("09:LogonType", {}), strings{}) << "a listing of any event is for no event ID";
}

TEST(statistics_run, combinations_need_a_statistics_file) {
  const std::string log = std::string(ZANVIK_SOURCE_DIR) + "/samples/security.evtx";
  const auto rows_of = [](const program_run& run) { return run.out.substr(run.out.find('\n')); };
  const auto plain = run_zanvik({"-log", log, "-quiet", "-csv"});
  const auto hist = run_zanvik({"-log", log, "-quiet", "-csv", "-hist", "09:LogonType"});
  EXPECT_EQ(hist.status, 0);
  EXPECT_EQ(rows_of(hist), rows_of(plain));
}

}  // namespace
}  // namespace zanvik::testing
