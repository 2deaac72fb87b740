// Whole runs of `zanvik report`: what goes into the page, where it goes, and the status.
#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <set>

#include "../report/read_page.h"
#include "../run/program_run.h"
#include "evt_builder.h"
#include "incident_builder.h"
#include "log_builder.h"
#include "questions/questions.h"
#include "samples_builder.h"

namespace zanvik::testing {
namespace {

std::string bytes_of_log(const file_bytes& log) {
  return {reinterpret_cast<const char*>(log.bytes().data()), log.bytes().size()};
}

std::string text_of_file(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

std::string lower(std::string text) {
  std::transform(text.begin(), text.end(), text.begin(),
                 [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c; });
  return text;
}

// What stands between two texts, the first time.
std::string between(const std::string& text, const std::string& before, const std::string& behind) {
  const std::size_t from = text.find(before);
  if (from == std::string::npos) return "";
  const std::size_t at = from + before.size();
  return text.substr(at, text.find(behind, at) - at);
}

class report_run : public ::testing::Test {
 protected:
  void SetUp() override {
    std::filesystem::create_directories(scratch_.path("logs"));
    for (const auto& [name, log] : incident_logs()) {
      scratch_.write("logs/" + name, bytes_of_log(log));
    }
    scratch_.write("logs/sysmon.evtx", bytes_of_log(sysmon_sample()));
    scratch_.write("logs/old.evt",
                   bytes_of_log(evt_builder()
                                    .add({.event_id = 528,
                                          .source = "Security",
                                          .strings = {"anna", "WS01", "0x1", "10", "User32"}})
                                    .add({.event_id = 6005, .source = "EventLog"})
                                    .cursor()));
  }

  // Runs the verb with a page as its output.
  program_run report(std::vector<std::string> arguments) {
    arguments.insert(arguments.begin(), {"report", "-o", "case.html"});
    program_run run = run_zanvik(arguments, {.input = input_, .folder = scratch_.path("")});
    html_ = text_of_file(scratch_.path("case.html"));
    return run;
  }

  const scratch_dir scratch_;
  std::string html_, input_;
};

// Every table has the events that export has of its providers and IDs.
TEST_F(report_run, counts_are_those_of_export) {
  const auto exported = run_zanvik({"export", "logs"}, {.input = "", .folder = scratch_.path("")});
  std::map<std::pair<std::string, std::string>, std::uint64_t> events;  // provider, ID
  std::set<std::string> scripts;
  std::istringstream lines(exported.out);
  std::uint64_t all = 0;
  for (std::string line; std::getline(lines, line); ++all) {
    const std::string rest = between(line, "\"EventID\":", "\"TimeCreated\"");
    const std::string id =
        rest[0] == '{' ? between(rest, "\"#text\":", "}") : rest.substr(0, rest.find(','));
    ++events[{lower(between(line, "{\"Name\":\"", "\"")), id}];
    if (id == "4104") scripts.insert(between(line, "\"ScriptBlockId\":\"", "\""));
  }
  ASSERT_EQ(report({"logs"}).status, 0);
  const page_content page(html_);
  std::size_t tables = 0;
  for (const question& asked : questions()) {
    std::uint64_t wanted = 0;
    for (const question_source& source : asked.sources) {
      wanted += events[{lower(std::string(source.provider)), std::to_string(source.event_id)}];
    }
    if (asked.name == "script_blocks") wanted = scripts.size();
    EXPECT_EQ(page.table(std::string(asked.name)).rows.size(), wanted) << asked.name;
    tables += wanted != 0 ? 1 : 0;
  }
  EXPECT_GE(tables, 14U);
  EXPECT_NE(html_.find("<dt>Events</dt><dd>" + std::to_string(all) + "</dd>"), std::string::npos);
  EXPECT_EQ(page.table("failed_logons").rows.size(), incident_failures + 5);
}

TEST_F(report_run, legacy_logs_have_rows_too) {
  ASSERT_EQ(report({"logs/old.evt"}).status, 0);
  const page_content page(html_);
  ASSERT_EQ(page.table("logons").rows.size(), 1U);
  EXPECT_EQ(page.table("logons").rows[0].at("account"), "anna");
  EXPECT_EQ(page.table("logons").rows[0].at("logon_type"), "remote interactive (10)");
  EXPECT_EQ(page.table("starts_and_stops").rows.size(), 1U);
}

TEST_F(report_run, options_choose_events_and_paths) {
  ASSERT_EQ(report({"--from", "2024-03-16", "--to", "2024-03-16", "logs"}).status, 0);
  EXPECT_EQ(page_content(html_).table("failed_logons").rows.size(), incident_failures);
  scratch_.write("list", "logs/Security.evtx\nlogs/System.evtx\n");
  ASSERT_EQ(report({"--from-list", "list", "--where", "TargetUserName=helpdesk"}).status, 0);
  const page_content page(html_);
  EXPECT_EQ(page.data["logs"].items.size(), 2U);
  EXPECT_EQ(page.table("logons").rows.size(), 1U);
  EXPECT_EQ(page.table("starts_and_stops").rows.size(), 0U);
  input_ = bytes_of_log(sysmon_sample());
  ASSERT_EQ(report({"-"}).status, 0);
  EXPECT_EQ(page_content(html_).table("processes").rows.size(), 5U);
}

TEST_F(report_run, says_what_it_was_made_of_and_how) {
  ASSERT_EQ(report({"--quiet", "logs/System.evtx", "--provider", "it's"}).status, 0);
  EXPECT_NE(html_.find("<code>zanvik report -o case.html --quiet logs/System.evtx --provider "
                       "&#39;it&#39;\\&#39;&#39;s&#39;</code>"),
            std::string::npos);
  if (html_.find("built without checks") != std::string::npos) GTEST_SKIP() << "no check";
  const std::string ledger = run_zanvik({"check", "-f", "json", "logs/System.evtx"},
                                        {.input = "", .folder = scratch_.path("")})
                                 .out;
  const std::string sum = between(ledger, "\"sha256\":\"", "\"");
  ASSERT_EQ(sum.size(), 64U);
  EXPECT_NE(html_.find(sum), std::string::npos);
}

TEST_F(report_run, two_runs_make_the_same_page) {
  ASSERT_EQ(report({"logs"}).status, 0);
  const std::string first = html_;
  ASSERT_EQ(report({"logs"}).status, 0);
  EXPECT_TRUE(first == html_);
}

TEST_F(report_run, what_cannot_be_read_is_in_the_page) {
  std::string log = text_of_file(scratch_.path("logs/Security.evtx"));
  log[4096] = 'x';
  scratch_.write("logs/Security.evtx", log);
  const program_run run = report({"logs", "missing<b>.evtx"});
  EXPECT_EQ(run.status, 1);
  EXPECT_NE(html_.find("logs/Security.evtx: 1 chunk cannot be read"), std::string::npos);
  EXPECT_NE(html_.find("<li>missing&lt;b&gt;.evtx: "), std::string::npos);
  EXPECT_NE(html_.find("Remote desktop"), std::string::npos);
}

TEST_F(report_run, wrong_command_lines_leave_everything_as_it_is) {
  const struct {
    std::vector<std::string> arguments;
    const char* said;
  } rows[] = {
      {{"report", "logs"}, "--output is required"},
      {{"report", "-o", "logs/System.evtx", "logs"}, "is one of the files to read"},
      {{"report", "-o", "x.html"}, "PATH is required"},
      {{"report", "-o", "x.html", "--min-level", "low", "logs"}, "--min-level requires --rules"},
      {{"report", "-o", "x.html", "--rules", "logs", "logs"}, "there is no rule"},
  };
  const std::string before = text_of_file(scratch_.path("logs/System.evtx"));
  for (const auto& row : rows) {
    const auto run = run_zanvik(row.arguments, {.input = "", .folder = scratch_.path("")});
    EXPECT_EQ(run.status, 2) << row.said;
    EXPECT_NE(run.err.find(row.said), std::string::npos) << run.err;
    EXPECT_FALSE(std::filesystem::exists(scratch_.path("x.html")));
  }
  EXPECT_TRUE(text_of_file(scratch_.path("logs/System.evtx")) == before);
  EXPECT_EQ(run_zanvik({"report", "-o", "no/such/folder.html", "logs"},
                       {.input = "", .folder = scratch_.path("")})
                .status,
            1);
}

#ifdef ZANVIK_SIGMA
TEST_F(report_run, matches_are_those_of_hunt) {
  const std::string rules = ZANVIK_SOURCE_DIR "/examples/rules";
  scratch_.write("logs/security.evtx", bytes_of_log(security_sample()));
  const auto hunted = run_zanvik({"hunt", "-r", rules, "-f", "jsonl", "logs"},
                                 {.input = "", .folder = scratch_.path("")});
  std::multiset<std::string> wanted, seen;
  std::istringstream lines(hunted.out);
  for (std::string line; std::getline(lines, line);) {
    wanted.insert(between(line, "\"title\":\"", "\""));
  }
  ASSERT_GE(wanted.size(), 6U);
  ASSERT_EQ(report({"--rules", rules, "logs"}).status, 0);
  const page_table matches = page_content(html_).table("matches");
  for (const auto& row : matches.rows) seen.insert(row.at("rule"));
  EXPECT_EQ(seen, wanted);
  EXPECT_NE(html_.find("T1059.001"), std::string::npos);
  ASSERT_EQ(report({"--rules", rules, "--min-level", "high", "logs"}).status, 0);
  for (const auto& row : page_content(html_).table("matches").rows) {
    EXPECT_EQ(row.count("level") == 0 ? "high" : row.at("level"), "high");
  }
}
#endif

}  // namespace
}  // namespace zanvik::testing
