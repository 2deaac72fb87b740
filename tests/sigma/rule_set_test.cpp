// Rules together: their log sources, filters, correlations, and what the user wants of them.
#include <gtest/gtest.h>

#include "reference/rule_checks.h"
#include "scratch_dir.h"

namespace zanvik::sigma {
namespace {

using testing::scratch_dir;

rule_set load(const std::string& text, const rule_choice& choice = {},
              const log_source_table& sources = {}) {
  rule_set set;
  load_rule_texts({{"test.yml", text}}, choice, sources, set);
  return set;
}

std::string detection(const std::string& head,
                      const std::string& source = "category: process_creation") {
  return head + "\nlogsource: {product: windows, " + source +
         "}\ndetection: {s: {User: x}, condition: s}\n---\n";
}

struct source_case {
  const char* source;
  std::size_t events;  // entries that it stands for
  const char* reason;
};

const source_case source_cases[] = {
    {"{product: windows, category: process_creation}", 2, "Sysmon, and event 4688"},
    {"{category: process_creation}", 2, "a rule without a product is for all of them"},
    {"{product: linux, category: process_creation}", 0, "another product"},
    {"{category: antivirus}", 1, "an entry without a product"},
    {"{product: windows}", 1, "any event"},
    {"{product: windows, service: powershell}", 1, "one entry of two channels"},
    {"{product: windows, category: ps_script, service: powershell}", 1,
     "a category in its service"},
    {"{product: windows, category: ps_script, service: security}", 0, "and in another one"},
    {"{product: windows, category: file_access}", 0, "events that are in no log"},
    {"{category: webserver}", 0, "no event log"},
};

TEST(log_sources, stand_for_events) {
  const log_source_table table;
  for (const source_case& c : source_cases) {
    const rule_set set = load(std::string("title: t\nlogsource: ") + c.source +
                              "\ndetection: {s: {F: 1}, condition: s}\n");
    EXPECT_EQ(set.rules[0].events.size(), c.events) << c.reason;
    EXPECT_EQ(set.rules[0].state == rule_state::runs, c.events != 0) << c.reason;
    EXPECT_EQ(set.rules[0].reason.empty(), c.events != 0) << c.reason;
  }
}

TEST(log_sources, concern_channels_in_any_case_and_rename_fields) {
  std::string ignored;
  const auto events = log_source_table().find({"process_creation", "windows", ""}, ignored);
  ASSERT_EQ(events.size(), 2U);
  EXPECT_TRUE(concerns(events[0], "microsoft-windows-sysmon/operational", "any", 1));
  EXPECT_FALSE(concerns(events[0], "microsoft-windows-sysmon/operational", "any", 2));
  EXPECT_FALSE(concerns(events[0], "security", "any", 1));
  EXPECT_EQ(events[1].field_name("Image"), "NewProcessName");
  EXPECT_EQ(events[1].field_name("CommandLine"), "CommandLine");
}

TEST(log_sources, a_table_of_the_user_replaces_entries) {
  log_source_table table;
  std::size_t line = 0;
  EXPECT_EQ(
      table.add("sources:\n  - category: process_creation\n    product: windows\n    events:\n"
                "      - {channel: Mine, provider: [P, Q], event_id: [7, 8],\n"
                "         where: {Kind: start}, fields: {Image: Path}}\n",
                line),
      "");
  std::string reason;
  const auto events = table.find({"process_creation", "windows", ""}, reason);
  ASSERT_EQ(events.size(), 1U);
  EXPECT_TRUE(concerns(events[0], "mine", "q", 8));
  EXPECT_FALSE(concerns(events[0], "mine", "r", 8));
  EXPECT_EQ(events[0].where.size(), 1U);
  EXPECT_EQ(events[0].field_name("Image"), "Path");
  // The others are still there, and a broken table changes nothing.
  EXPECT_FALSE(table.find({"", "windows", "security"}, reason).empty());
  EXPECT_NE(table.add("sources:\n  - category: x\n    events:\n      - {event_id: one}\n", line),
            "");
  EXPECT_EQ(line, 4U);
  EXPECT_TRUE(table.find({"x", "windows", ""}, reason).empty());
}

TEST(rule_set, options_choose_rules) {
  const std::string rules =
      detection("title: a\nid: 1\nlevel: low\nstatus: test\ntags: [attack.t1059.001]") +
      detection("title: b\nid: 2\nlevel: High\nstatus: stable\ntags: [attack.t1003]") +
      detection("title: c\nid: 3");
  const auto running = [&](const rule_choice& choice) {
    std::string out;
    for (const known_rule& r : load(rules, choice).rules) {
      if (r.state == rule_state::runs) out += r.content.title;
    }
    return out;
  };
  rule_choice choice;
  EXPECT_EQ(running(choice), "abc");
  choice.min_level = rule_level::medium;
  EXPECT_EQ(running(choice), "b");
  choice = {};
  choice.statuses = {"test", "experimental"};
  EXPECT_EQ(running(choice), "a");
  choice = {};
  choice.excluded_ids = {"2", "X"};
  EXPECT_EQ(running(choice), "ac");
  choice = {};
  choice.tags = {"Attack.T1059*"};
  EXPECT_EQ(running(choice), "a");
}

TEST(rule_set, filters_suppress_what_they_match) {
  const rule_set set =
      load(detection("title: a\nid: 1") + detection("title: b\nname: second") +
           detection("title: other source\nid: 3", "category: image_load") +
           "title: admins\nlogsource: {product: windows, category: process_creation}\n"
           "filter:\n  rules: [1, second, 3, 9]\n  f: {Host|startswith: adm_}\n  condition: f\n---\n"
           "title: of nothing\nlogsource: {product: windows}\n"
           "filter:\n  rules: [9]\n  f: {Host: x}\n  condition: f\n");
  all_ways ways(set);
  EXPECT_EQ(ways.match({{"User", "x"}, {"Host", "pc"}}).quick,
            (std::vector<std::uint32_t>{0, 1, 2}));
  // The third is of another log source than the filter.
  const auto filtered = ways.match({{"User", "x"}, {"Host", "adm_pc"}});
  EXPECT_EQ(filtered.quick, (std::vector<std::uint32_t>{2}));
  EXPECT_TRUE(filtered.agree());
  EXPECT_EQ(set.rules[3].reason, "another log source: 3, no rule 9");
  EXPECT_EQ(set.rules[3].state, rule_state::runs);
  EXPECT_EQ(set.rules[4].state, rule_state::not_applicable);
}

std::string correlation(const std::string& name, const std::string& rules,
                        const std::string& more = "") {
  return "title: " + name + "\nname: " + name + "\ncorrelation:\n  type: temporal\n  rules: [" +
         rules + "]\n  group-by: [User]\n  timespan: 5m\n" + more + "---\n";
}

TEST(rule_set, correlations_need_what_they_stand_on) {
  const rule_set set =
      load(correlation("above", "below, a") + correlation("below", "a, b") +
           detection("title: a\nname: a") + detection("title: b\nname: b") +
           detection("title: c\nname: c") + correlation("generating", "c", "  generate: true\n") +
           correlation("lost", "nowhere") + correlation("chicken", "egg") +
           correlation("egg", "chicken") +
           "title: sum\ncorrelation: {type: value_median, rules: [a], timespan: 5m}\n");
  const auto state = [&](const std::string& name) {
    return set.rules[static_cast<std::size_t>(set.find(name))].state;
  };
  const auto reported = [&](const std::string& name) {
    return set.rules[static_cast<std::size_t>(set.find(name))].reported;
  };
  EXPECT_EQ(state("above"), rule_state::runs);
  EXPECT_TRUE(reported("above"));
  EXPECT_FALSE(reported("below"));
  EXPECT_FALSE(reported("a"));
  EXPECT_TRUE(reported("c"));
  EXPECT_EQ(state("lost"), rule_state::broken);
  EXPECT_EQ(state("chicken"), rule_state::broken);
  EXPECT_EQ(set.rules.back().state, rule_state::unsupported);
}

TEST(rule_set, a_broken_rule_spares_those_beside_it_in_the_file) {
  const rule_set set = load(detection("title: a") + "title: [\n---\n" + detection("title: b") +
                            detection("title: c\ntaxonomy: other") + "# nothing\n---\n" +
                            detection("title: d\nid: \"\\e[2J\"", "nosuch: [x"));
  const std::pair<const char*, rule_state> expected[] = {{"a", rule_state::runs},
                                                         {"", rule_state::broken},
                                                         {"b", rule_state::runs},
                                                         {"c", rule_state::unsupported},
                                                         {"", rule_state::broken}};
  ASSERT_EQ(set.rules.size(), std::size(expected));
  for (std::size_t i = 0; i < std::size(expected); ++i) {
    EXPECT_EQ(set.rules[i].content.title, expected[i].first);
    EXPECT_EQ(set.rules[i].state, expected[i].second) << set.rules[i].reason;
  }
  ASSERT_EQ(set.messages.size(), 2U);
  EXPECT_EQ(set.messages[0].rfind("test.yml:6: ", 0), 0U) << set.messages[0];
}

// What rules share has an end; the first ones have it.
TEST(rule_set, fields_of_all_rules_are_limited) {
  std::string text;
  for (int r = 0; r < 6; ++r) {
    text += "title: r\nlogsource: {product: windows}\ndetection:\n  condition: s\n  s:\n";
    for (int f = 0; f < 1900; ++f) {
      text += "    F" + std::to_string(r) + "_" + std::to_string(f) + ": x\n";
    }
    text += "---\n";
  }
  const rule_set set = load(text);
  ASSERT_EQ(set.rules.size(), 6U);
  EXPECT_EQ(set.rules[3].state, rule_state::runs);
  EXPECT_EQ(set.rules[5].reason, "the rules ask for too many fields");
}

TEST(rule_set, folders_are_read_to_the_bottom_and_broken_files_are_told_of) {
  const scratch_dir folder;
  folder.write("b.yml", detection("title: b"));
  folder.write("a.yaml", detection("title: a"));
  folder.write("broken.yml", "title: x\ndetection: [\n");
  folder.write("notes.txt", "title: none\n");
  const log_source_table sources;
  rule_set set;
  EXPECT_EQ(load_rules({folder.path("")}, {}, sources, set), "");
  ASSERT_EQ(set.rules.size(), 3U);
  EXPECT_EQ(set.rules[0].content.title, "a");
  EXPECT_EQ(set.files, 3U);
  ASSERT_EQ(set.messages.size(), 1U);
  EXPECT_NE(set.messages[0].find("broken.yml:3: "), std::string::npos) << set.messages[0];
  EXPECT_NE(load_rules({folder.path("nowhere")}, {}, sources, set), "");
  rule_set none;
  EXPECT_NE(load_rules({folder.path("notes")}, {}, sources, none), "");
  EXPECT_NE(load_rules({folder.write("empty.yml", "")}, {}, sources, none), "");
}

}  // namespace
}  // namespace zanvik::sigma
