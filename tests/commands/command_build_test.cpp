#include "commands/command_build.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <string>
#include <vector>

#include "base/time_format.h"
#include "base/time_value.h"

namespace zanvik {
namespace {

const std::uint64_t march_11 =
    system_to_filetime({.year = 2024, .month = 3, .day = 11, .hour = 10, .minute = 30});

// A run over one log, and what it provides to the commands.
struct build_setup {
  build_setup() { set_date_format("yyyy-mm-dd"); }

  void set_date_format(const char* text) {
    format.date_format = text;
    (void)build_format_descriptor(format.descriptor, text, format.time_format, false);
  }

  std::vector<ReportCommand> build(const std::vector<std::string_view>& lines) {
    CommandList list;
    read_command_lines(list, lines);
    const command_context context{log, selection, format, hist_fields, classify};
    CommandSet set;
    const bool added = build_command_set(set, list, context, true);
    EXPECT_EQ(added, !set.empty());
    std::vector<ReportCommand> commands;
    for (const auto& [path, command] : set) commands.push_back(command);
    return commands;
  }

  log_source log{"Cases/Security.evtx", "security", log_kind::evtx};
  selection_options selection;
  output_format format;
  std::vector<std::string> hist_fields;
  log_classifier classify = [this](log_source& found, const std::string& path) {
    ++classified;
    const bool legacy = path == "other.evt";
    found = {path, legacy ? "system" : "security", legacy ? log_kind::evt : log_kind::evtx};
    return path != "lost";
  };
  int classified = 0;
};

// The one command of a line, without its kind.
ReportCommand command_of(build_setup& setup, const std::string& options, bool evt = false) {
  const std::string line = (evt ? "!cmd, -enum_evtlog, " : "!cmd, -enum_evtxlog, ") + options;
  const auto commands = setup.build({line});
  EXPECT_EQ(commands.size(), 1u) << line;
  return commands.empty() ? ReportCommand() : commands[0];
}

TEST(build_command_set, options_and_defaults) {
  build_setup setup;
  const ReportCommand plain = command_of(setup, "-x");
  EXPECT_EQ(plain.index, 0);
  EXPECT_EQ(plain.event_id, any_event_id);
  EXPECT_EQ(plain.log_path, "Cases/Security.evtx");
  EXPECT_TRUE(plain.emit && plain.skip_system_fields && !plain.all_data && !plain.has_hist);
  const ReportCommand full = command_of(
      setup,
      "-NAME, a caption, -Id, 0x1212, stray, -conditions, A|b, -conditions, C, -string_exists, "
      "text, -all_data, -event_lookup, -type, CURI, -hist, User | Domain");
  EXPECT_EQ(full.name, "a caption");
  EXPECT_EQ(full.event_id, 0x1212u);
  EXPECT_EQ(full.conditions, (std::vector<std::string>{"A|b", "C"}));
  EXPECT_EQ(full.string_exists, "text");
  EXPECT_TRUE(full.all_data && full.event_lookup && full.has_hist);
  EXPECT_EQ(full.hist_fields_lower, (std::vector<std::string>{"user", "domain"}));
  EXPECT_EQ(command_of(setup, "-id, -1").event_id, any_event_id) << "a sign widens";
}

TEST(build_command_set, pull_lists) {
  const std::tuple<const char*, const char*, std::vector<std::string>> rows[] = {
      {"in the order named, each once", "-pull, b, -pull, a, -pull, b", {"b", "a"}},
      {"an option may be a value", "-pull, a, -pull, -pull, b", {"a", "-pull"}},
      {"the last one has no value", "-pull, a, -pull", {"a"}},
      {"translated fields are pulled too",
       "-pull, a, -translate, Vbr0!VBR|Mbr!mbr|No!x|a!tf",
       {"a", "Mbr", "Vbr0"}},
      {"but only beside others", "-translate, Mbr!mbr", {}},
  };
  for (const auto& [reason, options, expected] : rows) {
    build_setup setup;
    EXPECT_EQ(command_of(setup, options).pull, expected) << reason;
  }
}

TEST(build_command_set, levels) {
  build_setup setup;
  EXPECT_EQ(command_of(setup, "-success_type, error").level_condition, "Level|2");
  EXPECT_EQ(command_of(setup, "-success_type, warning").level_condition, "Level|3");
  EXPECT_EQ(command_of(setup, "-success_type, Error").level_condition, "Level|Error");
  setup.log = {"SysEvent.Evt", "system", log_kind::evt};
  setup.classify = [](log_source& log, const std::string& path) {
    log = {path, "system", log_kind::evt};
    return true;
  };
  EXPECT_EQ(command_of(setup, "-success_type, warning", true).level_condition, "success_type|2");
}

TEST(build_command_set, translate_terms_are_kept_and_read) {
  build_setup setup;
  setup.format.base16 = false;
  const ReportCommand command =
      command_of(setup, "-translate, Mbr!MBR|Time!tf#0x10|none|Both!a!tf#8, -translate, Mbr!vbr");
  EXPECT_EQ(command.translate_terms.size(), 3u);
  EXPECT_EQ(command.translators.size(), 2u) << "with a mark, the # is a part of the kind";
  const translate_spec mbr{translate_kind::vbr, 0, 1, true};
  EXPECT_EQ(command.translators.at("Mbr"), mbr) << "the later term counts";
  EXPECT_EQ(command.translators.at("Time").offset, 16);
}

TEST(build_command_set, times_in_the_format_of_the_run) {
  constexpr std::uint64_t open = ~std::uint64_t{0};
  const std::uint64_t midnight = march_11 - 630 * 60 * qx::ticks_per_second;
  const std::tuple<const char*, const char*, const char*, bool, std::uint64_t, std::uint64_t>
      rows[] = {
          {"date and time", "yyyy-mm-dd", "-start_time, 2024-03-11 10:30", true, march_11, open},
          {"date alone", "yyyy-mm-dd", "-stop_time, 2024-03-11", true, 0, midnight},
          {"as the run writes it", "dd/mm/yyyy", "-start_time, 11/03/2024", true, midnight, open},
          {"by name", "mmm-dd-yyyy", "-start_time, Mar-11-2024", true, midnight, open},
          {"another order", "yyyy-mm-dd", "-start_time, 03/11/2024", false, 0, 0},
          {"no separator", "yyyymmdd", "-start_time, 20240311", false, 0, 0},
          {"no usable time", "yyyy-mm-dd", "-start_time, 1700-01-01", false, 0, 0},
          {"a bad stop leaves it open", "yyyy-mm-dd", "-stop_time, soon", true, 0, open},
      };
  for (const auto& [reason, date_format, options, kept, start, stop] : rows) {
    build_setup setup;
    setup.set_date_format(date_format);
    const auto commands = setup.build({std::string("!cmd, -enum_evtxlog, ") + options});
    ASSERT_EQ(commands.size(), kept ? 1u : 0u) << reason;
    if (!kept) continue;
    EXPECT_EQ(commands[0].start_time, start) << reason;
    EXPECT_EQ(commands[0].stop_time, stop) << reason;
  }
}

TEST(build_command_set, the_run_overrules) {
  build_setup setup;
  setup.selection.start_time = 5;
  setup.selection.substring = "run";
  const ReportCommand command =
      command_of(setup, "-start_time, 2024-03-11, -stop_time, 2024-03-11 10:30, -string_exists, x");
  EXPECT_EQ(command.start_time, 5u);
  EXPECT_EQ(command.stop_time, march_11) << "the run has none";
  EXPECT_EQ(command.string_exists, "run");
}

TEST(build_command_set, kinds) {
  build_setup setup;
  const auto commands =
      setup.build({"!cmd, -id, 1", "!cmd, -enum_evtlog, -id, 2", "!cmd, -enum_evtxlog, -id, 3",
                   "!cmd, -enum_evtlog, -enum_evtxlog, -id, 4", "!cmd, -enum_evtxlog, -type, sys"});
  ASSERT_EQ(commands.size(), 2u);
  EXPECT_EQ(commands[0].event_id, 3u);
  EXPECT_EQ(commands[0].index, 2) << "by position in the list";
  EXPECT_EQ(commands[1].event_id, 4u) << "both: for .evtx";
}

TEST(build_command_set, only_the_first_command_has_its_log_looked_at) {
  build_setup setup;
  auto commands = setup.build(
      {"!cmd, -enum_evtxlog, -log, lost, -id, 1", "!cmd, -enum_evtxlog, -log, other.evt, -id, 2"});
  EXPECT_EQ(setup.classified, 1);
  ASSERT_EQ(commands.size(), 1u) << "a lost log costs its command alone";
  EXPECT_EQ(commands[0].event_id, 2u);
  EXPECT_EQ(commands[0].log_path, "Cases/Security.evtx");

  commands = setup.build({"!cmd, -enum_evtlog, -log, other.evt, -id, 1",
                          "!cmd, -enum_evtxlog, -id, 2", "!cmd, -enum_evtlog, -id, 3"});
  ASSERT_EQ(commands.size(), 2u) << "the others are for the log that the first one named";
  EXPECT_EQ(commands[1].event_id, 3u);
  EXPECT_EQ(commands[1].log_path, "other.evt");
  EXPECT_EQ(setup.log.channel, "system");

  setup.log = {};
  EXPECT_TRUE(setup.build({"!cmd, -enum_evtxlog"}).empty()) << "no log at all";
}

TEST(build_command_set, keys_and_histogram_numbers) {
  build_setup setup;
  setup.hist_fields = {"Run"};
  CommandList list;
  read_command_lines(list, std::vector<std::string_view>{"!cmd, -enum_evtxlog, -id, 1",
                                                         "!cmd, -enum_evtxlog, -type, no",
                                                         "!cmd, -enum_evtxlog, -hist, Own"});
  CommandSet set;
  set.emplace("before", ReportCommand());
  const command_context context{setup.log, setup.selection, setup.format, setup.hist_fields,
                                setup.classify};
  ASSERT_TRUE(build_command_set(set, list, context, true));
  ASSERT_EQ(set.count("cases/security.evtx"), 2u) << "the key is in lower case";
  const ReportCommand& last = std::next(set.find("cases/security.evtx"))->second;
  EXPECT_EQ(last.hist_fields, std::vector<std::string>{"Own"});
  EXPECT_EQ(last.hist_index, 2) << "the dropped one counts";
  EXPECT_EQ(set.count("before"), 1u);
  EXPECT_FALSE(build_command_set(set, CommandList(), context, false));
  EXPECT_TRUE(set.empty());
}

// Any number of options on a line are read in one pass for each option; a quadratic one would not
// end.
TEST(build_command_set, hostile_text_ends_in_a_set_or_in_nothing) {
  constexpr std::size_t size = 1 << 20;
  const auto repeated = [](std::string_view text) {
    std::string all;
    while (all.size() < size) all += text;
    return all;
  };
  // `commands`: in the set
  const std::tuple<const char*, std::string, std::size_t> rows[] = {
      {"commas", "!cmd," + repeated(","), 0},
      {"NULs", "!cmd," + std::string(size, '\0'), 0},
      {"empty commands", repeated("!cmd,\n"), 0},
      {"options without value", "!cmd,-enum_evtxlog,-hist,x," + repeated("-name,"), 1},
      {"pulls", "!cmd,-enum_evtxlog," + repeated("-pull,-conditions,"), 1},
      {"times", "!cmd,-enum_evtxlog," + repeated("-pull,-stop_time,-pull,a,"), 1},
  };
  for (const auto& [reason, text, commands] : rows) {
    build_setup setup;
    CommandList list;
    read_command_text(list, text);
    const command_context context{setup.log, setup.selection, setup.format, setup.hist_fields,
                                  setup.classify};
    CommandSet set;
    build_command_set(set, list, context, false);
    EXPECT_EQ(set.size(), commands) << reason;
  }
}

}  // namespace
}  // namespace zanvik
