// Whole runs of `zanvik hunt`: statuses, forms, correlations, and what fields rules mean.
#include <gtest/gtest.h>

#include <algorithm>
#include <sstream>

#include "../run/program_run.h"
#include "log_builder.h"

namespace zanvik::testing {
namespace {

constexpr const char* samples = ZANVIK_SOURCE_DIR "/samples";
constexpr const char* rules = ZANVIK_SOURCE_DIR "/examples/rules";

std::vector<std::string> lines_of(const std::string& text) {
  std::vector<std::string> out;
  std::istringstream in(text);
  for (std::string line; std::getline(in, line);) out.push_back(line);
  return out;
}

std::string rule_text(const std::string& title, const std::string& source,
                      const std::string& detection) {
  return "title: " + title + "\nname: " + title + "\nlogsource: {product: windows, " + source +
         "}\ndetection:\n  s: " + detection + "\n  condition: s\n---\n";
}

// The titles of the rules that match, each as often as it does, in the order of their lines.
std::string titles(const std::string& jsonl) {
  std::string out;
  for (const std::string& line : lines_of(jsonl)) {
    const std::size_t at = line.find("\"rule\":{\"id\":");
    const std::size_t begin = line.find("\"title\":\"", at) + 9;
    if (at != std::string::npos) out += line.substr(begin, line.find('"', begin) - begin) + " ";
  }
  return out;
}

class hunt_runs : public ::testing::Test {
 protected:
  std::string hunt_titles(const std::string& rule_file, const log_builder& log,
                          const std::vector<std::string>& more = {}) {
    std::vector<std::string> args{"hunt", "--format", "jsonl", "--rules",
                                  folder_.write("rules.yml", rule_file)};
    args.insert(args.end(), more.begin(), more.end());
    log.write(folder_.path("log.evtx"));
    args.push_back(folder_.path("log.evtx"));
    const program_run run = run_zanvik(args);
    EXPECT_EQ(run.err, "");
    EXPECT_EQ(run.status, run.out.empty() ? 0 : 3);
    return titles(run.out);
  }
  scratch_dir folder_;
};

TEST_F(hunt_runs, own_rules_over_own_samples) {
  const program_run run = run_zanvik({"hunt", "--rules", rules, samples});
  EXPECT_EQ(run.status, 3);
  EXPECT_EQ(run.err, "");
  const auto lines = lines_of(run.out);
  ASSERT_EQ(lines.size(), 6U) << run.out;
  // By level, then by title; a correlation stands for the rules it is made of.
  EXPECT_EQ(lines[1].rfind("high    1 ", 0), 0U) << lines[1];
  EXPECT_NE(lines[1].find("Logon After Many Failed Ones"), std::string::npos);
  EXPECT_NE(lines[5].find("medium  2 "), std::string::npos) << lines[5];
  EXPECT_NE(lines[5].find("PowerShell With An Encoded Command"), std::string::npos);
}

TEST_F(hunt_runs, statistics) {
  const program_run run = run_zanvik({"hunt", "--rules", rules, "--stats", samples});
  const auto has = [&](const std::string& line) {
    const auto lines = lines_of(run.err);
    return std::count(lines.begin(), lines.end(), line) == 1;
  };
  EXPECT_TRUE(has("rules loaded    8")) << run.err;
  EXPECT_TRUE(has("events          97"));
  EXPECT_TRUE(has("matches         6"));
  EXPECT_TRUE(
      has("1        Logon After Many Failed Ones                       "
          "4f1c6a52-0b7e-4a0e-9f0d-1a2f5c7d3e05"));
  EXPECT_TRUE(has("12      Fabrikam-Odd/Operational"));
}

TEST_F(hunt_runs, statuses) {
  const std::string none = folder_.write("none.yml", rule_text("a", "service: system", "{F: x}"));
  EXPECT_EQ(run_zanvik({"hunt", "--rules", none, samples}).status, 0);
  EXPECT_EQ(run_zanvik({"hunt", "--rules", none}).status, 2);
  EXPECT_EQ(run_zanvik({"hunt", samples}).status, 2);
  EXPECT_EQ(run_zanvik({"hunt", "--rules", folder_.path("nowhere"), samples}).status, 2);
  EXPECT_EQ(run_zanvik({"hunt", "--rules", none, "--placeholder", "x", samples}).status, 2);
  EXPECT_EQ(run_zanvik({"hunt", "--rules", none, folder_.path("nowhere")}).status, 1);
  // Nobody should take a hunt without rules for one without matches.
  EXPECT_EQ(run_zanvik({"hunt", "--rules", rules, "--tag", "nosuch", samples}).status, 2);
  EXPECT_EQ(run_zanvik({"hunt", "--rules", none, "-o", none, samples}).status, 2);
  EXPECT_EQ(lines_of(run_zanvik({"hunt", "--rules", rules, "--rules", rules, samples}).out).size(),
            6U);
  // A broken rule is told of, and the others run.
  const program_run broken =
      run_zanvik({"hunt", "--rules", folder_.write("broken.yml", "title: x\ndetection: [\n"),
                  "--rules", rules, samples});
  EXPECT_EQ(broken.status, 3);
  EXPECT_NE(broken.err.find("broken.yml:3: "), std::string::npos) << broken.err;
  EXPECT_EQ(lines_of(broken.err).size(), 1U);
}

TEST_F(hunt_runs, the_list_has_every_rule_with_what_keeps_it_from_running) {
  const std::string file =
      folder_.write("rules.yml", rule_text("good", "service: system", "{F: x}") +
                                     "title: web\nlogsource: {category: webserver}\n"
                                     "detection: {s: {F: x}, condition: s}\n---\n" +
                                     rule_text("bad", "service: system", "{F|nosuch: x}"));
  const program_run run = run_zanvik({"hunt", "--rules", file, "--list"});
  EXPECT_EQ(run.status, 0);
  const auto lines = lines_of(run.out);
  ASSERT_EQ(lines.size(), 4U);
  EXPECT_EQ(lines[1].rfind("runs ", 0), 0U) << lines[1];
  EXPECT_EQ(lines[2].rfind("not applicable ", 0), 0U) << lines[2];
  EXPECT_EQ(lines[3].rfind("broken ", 0), 0U) << lines[3];
  EXPECT_NE(lines[3].find("'nosuch' is not known"), std::string::npos) << lines[3];
}

TEST_F(hunt_runs, forms_carry_the_rule) {
  const auto run = [&](const char* form) {
    return run_zanvik({"hunt", "--rules", rules, "--min-level", "high", "--format", form, "--order",
                       "time", samples});
  };
  const auto json = lines_of(run("jsonl").out);
  ASSERT_EQ(json.size(), 3U);
  EXPECT_EQ(titles(json[0] + "\n"), "Logon After Many Failed Ones ");
  EXPECT_TRUE(json[0].ends_with("\"events\":2,\"group\":{\"TargetUserName\":\"helpdesk\"}}}"))
      << json[0];
  EXPECT_TRUE(
      json[1].ends_with("\"tags\":[\"attack.execution\",\"attack.t1204.002\"],\"author\":"
                        "\"zanvik\",\"file\":\"" +
                        std::string(rules) + "/office_starts_shell.yml\"}}"))
      << json[1];
  const auto flat = lines_of(run("timesketch").out);
  ASSERT_EQ(flat.size(), 3U);
  EXPECT_NE(flat[1].find(",\"sigma_rule_level\":\"high\","), std::string::npos);
  EXPECT_TRUE(flat[1].ends_with("}")) << flat[1];
  const auto table = lines_of(run("csv").out);
  ASSERT_EQ(table.size(), 4U);
  EXPECT_TRUE(
      table[0].ends_with(",data,rule_id,rule_title,rule_level,rule_status,rule_tags,"
                         "rule_author,rule_file,correlation_first,correlation_last,"
                         "correlation_events,correlation_group"))
      << table[0];
  EXPECT_TRUE(table[1].ends_with(",\"2\",\"TargetUserName: helpdesk\"")) << table[1];
  EXPECT_TRUE(table[2].ends_with("/office_starts_shell.yml\",,,,")) << table[2];
  EXPECT_NE(table[2].find(",\"Shell Started By An Office Program\",\"high\",\"test\","),
            std::string::npos);
}

TEST_F(hunt_runs, details_have_each_match_with_its_event) {
  const auto lines_by = [&](const char* order) {
    std::vector<std::string> heads;
    for (const std::string& line : lines_of(
             run_zanvik({"hunt", "--rules", rules, "--details", "--order", order, samples}).out)) {
      if (line.find("  high  ") == 28 || line.find("  medium  ") == 28) heads.push_back(line);
    }
    return heads;
  };
  auto by_log = lines_by("log");
  ASSERT_EQ(by_log.size(), 6U);
  // A correlation comes last unless by time.
  EXPECT_NE(by_log.back().find("Logon After Many"), std::string::npos) << by_log.back();
  std::stable_sort(by_log.begin(), by_log.end(),
                   [](const auto& a, const auto& b) { return a.substr(0, 28) < b.substr(0, 28); });
  EXPECT_EQ(lines_by("time"), by_log);
  EXPECT_EQ(run_zanvik({"hunt", "--rules", rules, "--order", "time", samples}).status, 2);
}

TEST_F(hunt_runs, fields_go_by_the_names_that_rules_use) {
  const auto log = log_builder().chunk(
      {record(1, {.event_id = 7,
                  .provider = "Maker",
                  .process_id = 788,
                  .channel = "System",
                  .data = {{"New Value", slot::utf16("spaced")}, {"EventID", slot::utf16("9")}}}),
       record(2, {.event_id = 8,
                  .channel = "System",
                  .form = payload_form::user_data,
                  .data = {{"Param1", slot::utf16("nested")}}}),
       record(3, {.event_id = 9,
                  .channel = "System",
                  .form = payload_form::unnamed_event_data,
                  .data = {{"", slot::utf16("first")}, {"", slot::utf16("second")}}})});
  const std::string source = "service: system";
  EXPECT_EQ(hunt_titles(rule_text("attribute", source, "{Execution_ProcessID: 788, EventID: 7}") +
                            rule_text("spaces", source, "{NewValue: spaced}") +
                            rule_text("case", source, "{newvalue: spaced}") +
                            rule_text("leaf", source, "{Param1: nested}") +
                            rule_text("unnamed", source, "{Data: second}") +
                            rule_text("id", source, "{EventID: 9}") +
                            rule_text("keyword", source, "[secon]") +
                            rule_text("other", "service: security", "{EventID: 7}"),
                        log),
            "attribute spaces case leaf unnamed id keyword ");
}

TEST_F(hunt_runs, sources_are_told_apart_by_channel_id_and_fields) {
  const auto sysmon = [](std::uint64_t number, std::uint32_t id, std::vector<data_field> data) {
    return record(number, {.event_id = id,
                           .provider = "Microsoft-Windows-Sysmon",
                           .channel = "Microsoft-Windows-Sysmon/Operational",
                           .data = std::move(data)});
  };
  const auto log = log_builder().chunk(
      {sysmon(1, 1, {{"Image", slot::utf16("C:\\a.exe")}}),
       record(2, {.event_id = 4688,
                  .channel = "Security",
                  .data = {{"NewProcessName", slot::utf16("C:\\A.EXE")}}}),
       sysmon(3, 12, {{"EventType", slot::utf16("DeleteKey")}, {"TargetObject", slot::utf16("k")}}),
       sysmon(4, 12,
              {{"EventType", slot::utf16("CreateKey")}, {"TargetObject", slot::utf16("k")}})});
  EXPECT_EQ(hunt_titles(
                rule_text("process", "category: process_creation", "{Image|endswith: '\\a.exe'}") +
                    rule_text("added", "category: registry_add", "{TargetObject: k}") +
                    rule_text("any", "category: registry_event", "{TargetObject: k}"),
                log),
            "process process any added any ");
}

TEST_F(hunt_runs, a_table_of_the_user_says_what_a_log_source_stands_for) {
  const auto log = log_builder().chunk(
      {record(1, {.event_id = 1, .channel = "Mine", .data = {{"Kind", slot::utf16("b")}}}),
       record(2, {.event_id = 1, .channel = "Mine", .data = {{"Kind", slot::utf16("c")}}}),
       record(3, {.event_id = 2, .channel = "Mine", .data = {{"Kind", slot::utf16("a")}}})});
  const std::string table = folder_.write(
      "sources.yml",
      "sources:\n  - category: webserver\n    events:\n      - channel: Mine\n"
      "        event_id: 1\n        where: {Kind: [a, b]}\n        fields: {cs-uri: Kind}\n");
  EXPECT_EQ(hunt_titles("title: web\nlogsource: {category: webserver}\n"
                        "detection: {s: {cs-uri|exists: true}, condition: s}\n",
                        log, {"--log-sources", table}),
            "web ");
}

// Failed logons of some accounts, then whatever rule is asked.
struct correlation_case {
  const char* type;
  const char* more;  // group-by and condition
  // Second and account; "+x" is a good logon, "=x" one that a third rule matches as well, a number
  // behind a blank is the datum Size.
  std::vector<std::pair<int, const char*>> events;
  const char* matches;
  const char* reason;
};

const correlation_case correlation_cases[] = {
    {"event_count",
     "group-by: [TargetUserName], condition: {gte: 3}",
     {{0, "a"}, {30, "a"}, {60, "A"}},
     "c ",
     "three within the timespan, in any case"},
    {"event_count",
     "group-by: [TargetUserName], condition: {gte: 3}",
     {{0, "a"}, {30, "b"}, {60, "a"}},
     "",
     "each account for itself"},
    {"event_count", "condition: {gte: 3}", {{0, "a"}, {30, "b"}, {60, "a"}}, "c ", "no groups"},
    {"event_count",
     "condition: {gte: 3}",
     {{0, "a"}, {30, "a"}, {61, "a"}},
     "",
     "just beyond the timespan"},
    {"event_count",
     "condition: {gte: 2}",
     {{0, "a"}, {40, "a"}, {80, "a"}, {300, "a"}, {310, "a"}},
     "c c ",
     "windows that overlap are one match"},
    {"event_count",
     "condition: {lt: 3}",
     {{0, "a"}, {10, "a"}, {20, "a"}},
     "",
     "the end of a window is none of its own"},
    {"event_count",
     "condition: {gt: 1, lte: 2}",
     {{0, "a"}, {10, "a"}, {200, "a"}},
     "c ",
     "a range"},
    {"value_count",
     "condition: {field: TargetUserName, gte: 2}",
     {{0, "a"}, {9, "a"}},
     "",
     "one value, twice"},
    {"value_count",
     "condition: {field: TargetUserName, gte: 2}",
     {{0, "a"}, {9, "b"}},
     "c ",
     "two"},
    {"temporal", "group-by: [TargetUserName]", {{0, "+a"}, {9, "a"}}, "c ", "both, in any order"},
    {"temporal", "group-by: [TargetUserName]", {{0, "+a"}, {9, "b"}}, "", "of one account"},
    {"temporal_ordered",
     "group-by: [TargetUserName]",
     {{0, "+a"}, {9, "a"}},
     "",
     "in another order"},
    {"temporal_ordered",
     "group-by: [TargetUserName]",
     {{0, "a"}, {9, "+a"}},
     "c ",
     "in their order"},
    {"temporal", "condition: {gte: 2}", {{0, "=a"}}, "c ", "one event may stand for two rules"},
    {"temporal", "condition: {lt: 3}", {{0, "+a"}, {9, "a"}}, "c ", "fewer rules than all"},
    {"temporal_ordered", "", {{0, "a"}, {0, "+a"}}, "", "two of three rules"},
    {"temporal_ordered",
     "condition: {gte: 2}",
     {{0, "a"}, {0, "+a"}},
     "c ",
     "of one time, in the order of the log"},
    {"temporal_ordered", "condition: {gte: 2}", {{0, "+a"}, {0, "a"}}, "", "the other order"},
    {"temporal_ordered", "condition: {gte: 2}", {{0, "=a"}}, "", "one event is not behind itself"},
    {"temporal_ordered",
     "condition: {gt: 1}",
     {{0, "a"}, {70, "+a"}, {80, "=a"}},
     "c ",
     "the latest start counts"},
    {"temporal_ordered",
     "condition: {eq: 2}",
     {{0, "a"}, {5, "+a"}, {200, "a"}, {205, "+a"}, {210, "=a"}, {400, "+a"}, {405, "a"}},
     "c ",
     "two of them in order, not three, nor two in another order"},
    {"temporal_ordered", "condition: {lt: 2}", {{0, "+a"}, {9, "a"}}, "c ", "one by one only"},
    {"temporal_ordered", "", {{0, "a"}, {5, "+a"}, {9, "+a"}, {60, "=a"}}, "c ", "all three"},
    {"event_count",
     "rules: [failed, good, third], condition: {gte: 3}",
     {{0, "=a"}, {9, "=a"}},
     "",
     "an event that two rules match is one"},
    {"value_sum",
     "condition: {field: Size, gt: 99.5}",
     {{0, "a 60"}, {9, "a none"}, {20, "b 0x28"}},
     "c ",
     "a sum of what are numbers"},
    {"value_sum",
     "condition: {field: Size, gt: 99}",
     {{0, "a 60"}, {61, "b 40"}},
     "",
     "not beyond the timespan"},
    {"value_sum", "condition: {field: Nothing, lt: 5}", {{0, "a 60"}}, "", "no number, no sum"},
    {"value_avg",
     "condition: {field: Size, gte: 50}",
     {{0, "a 10"}, {9, "a 70"}},
     "",
     "40 on the average"},
    {"value_avg", "condition: {field: Size, lte: 40}", {{0, "a 10"}, {9, "a 70"}}, "c ", "it is"},
    {"value_percentile",
     "condition: {field: TargetUserName, lte: 25}",
     {{0, "a"}, {1, "a"}, {2, "a"}, {3, "b"}, {4, "c"}},
     "c c ",
     "b and c are rare among those so far"},
    {"value_percentile",
     "condition: {field: TargetUserName, lte: 25}",
     {{0, "a"}, {1, "a"}, {2, "a"}, {3, "b"}, {4, "a"}, {5, "a"}, {6, "b"}},
     "c ",
     "b once in four, then twice in seven"},
    {"temporal_ordered",
     "group-by: [who], aliases: {who: {failed: TargetUserName, good: Account}}",
     {{0, "a"}, {9, "+a"}},
     "c ",
     "fields of other names"},
};

constexpr const char* correlation_bases = R"(
title: failed
name: failed
logsource: {product: windows, service: security}
detection: {s: {EventID: 4625}, condition: s}
---
title: good
name: good
logsource: {product: windows, service: security}
detection: {s: {EventID: 4624}, condition: s}
---
title: third
name: third
logsource: {product: windows, service: security}
detection: {s: {Third: yes}, condition: s}
)";

std::string rules_of(const correlation_case& c) {
  const std::string_view type = c.type, more = c.more;
  if (more.find("rules:") != more.npos) return "";
  if (!type.starts_with("temporal")) return "rules: [failed], ";
  const bool two = more.find("group-by") != more.npos;
  return two ? "rules: [failed, good], " : "rules: [failed, good, third], ";
}

record_builder logon(std::uint64_t number, int second, std::string account) {
  const char kind = account[0];
  if (kind == '+' || kind == '=') account.erase(0, 1);
  const std::size_t blank = account.find(' ');
  const std::string size = blank == std::string::npos ? "" : account.substr(blank + 1);
  const slot_value name = slot::utf16(account.substr(0, blank));
  return record(number, {.event_id = kind == '+' || kind == '=' ? 4624U : 4625U,
                         .filetime = filetime(2024, 1, 1, 0, 0, 0) +
                                     static_cast<std::uint64_t>(second) * 10'000'000,
                         .channel = "Security",
                         .data = {{"TargetUserName", name},
                                  {"Account", name},
                                  {"Size", slot::utf16(size)},
                                  {"Third", slot::utf16(kind == '=' ? "yes" : "no")}}});
}

TEST_F(hunt_runs, correlations) {
  for (const correlation_case& c : correlation_cases) {
    chunk_builder chunk;
    std::uint64_t number = 1;
    for (const auto& [second, account] : c.events) chunk.add(logon(number++, second, account));
    const std::string text = std::string("title: c\ncorrelation: {type: ") + c.type + ", " +
                             rules_of(c) + "timespan: 60s, " + c.more + "}\n---\n" +
                             correlation_bases;
    EXPECT_EQ(hunt_titles(text, log_builder().chunk(chunk)), c.matches) << c.reason;
  }
}

TEST_F(hunt_runs, copies_of_an_event_are_one_match) {
  const std::string file = folder_.write(
      "rules.yml",
      std::string("title: c\ncorrelation: {type: event_count, rules: [failed], timespan: 60s, "
                  "condition: {gte: 3}, generate: true}\n---\n") +
          correlation_bases);
  const auto log = log_builder().chunk({logon(1, 0, "a"), logon(2, 1, "a")});
  log.write(folder_.path("log.evtx"));
  log.write(folder_.path("copy.evtx"));
  const auto run = [&](const char* form, const char* unique) {
    return run_zanvik({"hunt", "--rules", file, "--format", form, "--order", "time", unique,
                       folder_.path("log.evtx"), folder_.path("copy.evtx")});
  };
  // Read twice, two events are four, enough for the correlation.
  EXPECT_EQ(titles(run("jsonl", "--quiet").out), "failed failed failed c failed ");
  const auto lines = lines_of(run("jsonl", "--unique").out);
  ASSERT_EQ(lines.size(), 2U);
  for (const std::string& line : lines) {
    EXPECT_NE(line.find("log.evtx\""), std::string::npos) << line;
    EXPECT_NE(line.find(",\"copies\":2},\"rule\":{\"id\":"), std::string::npos) << line;
  }
  const auto cells = lines_of(run("csv", "--unique").out);
  ASSERT_EQ(cells.size(), 3U);
  EXPECT_NE(cells[0].find(",data,copies,rule_id,"), std::string::npos) << cells[0];
  EXPECT_NE(cells[1].find("\",2,\"\",\"failed\","), std::string::npos) << cells[1];
  EXPECT_EQ(run_zanvik({"hunt", "--rules", file, "--unique", folder_.path("")}).status, 2);
}

TEST_F(hunt_runs, a_rule_that_crawls_is_left_out_of_the_rest_of_its_block_and_told_of) {
  const auto event = [](std::uint64_t number, const std::string& text) {
    return record(number, {.event_id = 7, .channel = "System", .data = {{"F", slot::utf16(text)}}});
  };
  chunk_builder chunk;
  // The last one is past what a block may cost.
  for (std::uint64_t number = 1; number <= 16; ++number) {
    chunk.add(event(number, std::string(300, 'a') + "b"));
  }
  chunk.add(event(17, "aaa"));
  log_builder log;
  log.chunk(chunk);
  // A block is 50 chunks: the last of these is the first of the next one.
  for (std::uint64_t number = 18; number <= 67; ++number) {
    log.chunk({event(number, number == 67 ? "aaa" : "b")});
  }
  log.write(folder_.path("log.evtx"));
  const std::string file =
      folder_.write("slow.yml", rule_text("slow", "service: system", "{F|re: '(a+)+$'}"));
  for (const char* threads : {"1", "3"}) {
    const program_run run = run_zanvik({"hunt", "--rules", file, "--format", "jsonl", "--threads",
                                        threads, folder_.path("log.evtx")});
    EXPECT_EQ(run.status, 3);
    EXPECT_EQ(titles(run.out), "slow ") << threads;
    EXPECT_NE(run.out.find("\"EventRecordID\":67"), std::string::npos) << run.out;
    EXPECT_NE(run.err.find("slow.yml: a regular expression reached its limit in 16 events; the "
                           "rule was left out of parts of 1 logs"),
              std::string::npos)
        << run.err;
  }
}

}  // namespace
}  // namespace zanvik::testing
