// Whole runs with -stats and -hist.
#include <gtest/gtest.h>

#include <algorithm>
#include <charconv>
#include <filesystem>

#include "log_builder.h"
#include "program_run.h"

namespace zanvik::testing {
namespace {

// Runs the program with -stats and returns the text of the statistics file.
std::string statistics_of(std::vector<std::string> args, const std::string& input = "") {
  const scratch_dir scratch;
  const std::string path = scratch.path("stats");
  args.insert(args.end(), {"-quiet", "-out", scratch.path("out"), "-stats", path});
  EXPECT_EQ(run_zanvik(args, {.input = input}).status, 0);
  return file_text(path);
}

// The text after `head` in each line that begins with it.
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

// Two logs and a file that is not a log, by ascending name.
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
  const std::tuple<const char*, std::vector<std::string>, std::uint64_t> rows[] = {
      {"a hidden record counts", {}, 3},
      {"one event", {"-eventid", "7"}, 3},
      {"none at all", {"-eventid", "65000"}, 3},
      {"records from slack count when they are looked for", {"-inc_slack"}, 4},
  };
  for (const auto& [reason, given, total] : rows) {
    auto args = given;
    args.insert(args.end(), {"-log", path});
    EXPECT_EQ(totals_of(statistics_of(args)), std::vector<std::uint64_t>{total}) << reason;
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

}  // namespace
}  // namespace zanvik::testing
