// Timelines of all logs: `export --format l2t|bodyfile` against the classic options, log by log,
// and the one order against a sort of the classic lines.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>

#include "../run/program_run.h"
#include "evt_builder.h"
#include "log_builder.h"

namespace zanvik::testing {
namespace {

struct timeline_form {
  std::string name, option;
};
const timeline_form forms[] = {{"l2t", "-csvl2t"}, {"bodyfile", "-bodyfile"}};

std::string bytes_of_log(const file_bytes& log) {
  return {reinterpret_cast<const char*>(log.bytes().data()), log.bytes().size()};
}

using lines = std::vector<std::string>;

lines lines_of(const std::string& text) {
  lines found;
  std::istringstream in(text);
  for (std::string line; std::getline(in, line);) found.push_back(line);
  return found;
}

// Without the line that names the command and the empty one behind it.
lines classic_lines(std::vector<std::string> args) {
  args.emplace_back("-quiet");
  lines found = lines_of(run_zanvik(args).out);
  found.erase(found.begin(), found.begin() + 2);
  return found;
}

lines exported_lines(std::vector<std::string> args) {
  args.insert(args.begin(), "export");
  const auto run = run_zanvik(args);
  EXPECT_EQ(run.status, 0) << run.err;
  return lines_of(run.out);
}

// The samples, and a legacy log.
std::vector<std::string> some_logs(const scratch_dir& scratch) {
  std::vector<std::string> logs;
  for (const char* name : {"system", "odd", "security", "sysmon"}) {
    logs.push_back(std::string(ZANVIK_SOURCE_DIR) + "/samples/" + name + ".evtx");
  }
  evt_builder evt;
  for (std::uint32_t i = 0; i < 9; ++i) {
    evt.add({.record_num = i + 1, .time_generated = 1'717'408'800 + 40 * (i * 5 % 9)});
  }
  logs.push_back(scratch.write("old.evt", bytes_of_log(evt)));
  return logs;
}

TEST(timeline_run, lines_of_a_log_are_those_of_the_classic_options) {
  const scratch_dir scratch;
  for (const std::string& log : some_logs(scratch)) {
    for (const timeline_form& form : forms) {
      const lines classic = classic_lines({"-log", log, form.option});
      EXPECT_GT(classic.size(), 5u);
      EXPECT_EQ(exported_lines({"-f", form.name, log}), classic) << log;
      EXPECT_EQ(exported_lines({"-f", form.name, "--slack", log}),
                classic_lines({"-log", log, form.option, "-inc_slack"}))
          << log;
      EXPECT_EQ(exported_lines({"-f", form.name, "--event-time", log}),
                classic_lines({"-log", log, form.option, "-event_time"}))
          << log;
      EXPECT_EQ(classic_lines({"-log", log, form.option, "-one_timeline"}), classic) << log;
    }
  }
}

TEST(timeline_run, all_logs_stand_in_one_order_of_the_times_that_show) {
  const scratch_dir scratch;
  const auto logs = some_logs(scratch);
  for (const timeline_form& form : forms) {
    std::vector<std::string> args{"-f", form.name};
    std::string names;
    lines expected;
    for (const std::string& log : logs) {
      args.push_back(log);
      names += log + "\n";
      const lines classic = classic_lines({"-log", log, form.option});
      expected.insert(expected.end(), classic.begin() + (expected.empty() ? 0 : 1), classic.end());
    }
    const auto shown = [&](const std::string& line) {
      return form.name == "l2t" ? line.substr(0, 24) : line.substr(line.rfind('|'));
    };
    std::stable_sort(expected.begin() + 1, expected.end(),
                     [&](const auto& a, const auto& b) { return shown(a) < shown(b); });
    EXPECT_EQ(exported_lines(args), expected);
    const auto classic =
        run_zanvik({"-pipe", form.option, "-one_timeline", "-quiet"}, {.input = names});
    EXPECT_EQ(lines_of(classic.out.substr(classic.out.find("\n\n") + 2)), expected);
  }
}

TEST(timeline_run, conditions_leave_lines_out) {
  const scratch_dir scratch;
  for (const std::string& log : some_logs(scratch)) {
    for (const timeline_form& form : forms) {
      lines expected = classic_lines({"-log", log, form.option});
      const std::string id = log.ends_with(".evt") ? "Event ID: 0" : "Event ID: 1";
      std::erase_if(expected, [&](const std::string& line) {
        return &line != &expected.front() && line.find(id + " ") == line.npos &&
               line.find(id + "-") == line.npos;
      });
      EXPECT_EQ(exported_lines({"-f", form.name, "-w", "EventID=" + id.substr(10), log}), expected);
    }
  }
}

TEST(timeline_run, the_classic_option_needs_a_timeline) {
  const std::string log = std::string(ZANVIK_SOURCE_DIR) + "/samples/system.evtx";
  const auto run = run_zanvik({"-log", log, "-csv", "-one_timeline", "-strict", "-quiet"});
  EXPECT_NE(run.err.find("\"-one_timeline\" is unknown or has no effect here"), std::string::npos);
  EXPECT_EQ(run_zanvik({"export", "-f", "l2t", "--unique", log}).status, 2);
}

}  // namespace
}  // namespace zanvik::testing
