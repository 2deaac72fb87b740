#include "commands/builtin_reports.h"

#include <gtest/gtest.h>

#include <set>
#include <string>

namespace zanvik {
namespace {

constexpr builtin_report all_reports[] = {builtin_report::pw,    builtin_report::time,
                                          builtin_report::logon, builtin_report::startstop,
                                          builtin_report::creds, builtin_report::partition_metadata,
                                          builtin_report::usb};

// A report's letter if it accepts a log, a dot if not.
template <typename F>
std::string letters(F&& passes) {
  const std::string names = "ptlscmu";
  std::string result;
  for (std::size_t i = 0; i < names.size(); ++i) result += passes(all_reports[i]) ? names[i] : '.';
  return result;
}

TEST(builtin_reports, gates) {
  struct row {
    const char* reason;
    log_source log;
    const char* concerned;  // by the list of logs
    const char* lines;      // has lines for the log in hand
  };
  const row rows[] = {
      {"security", {"a", "security", log_kind::evtx}, "ptl.c..", "ptl.c.."},
      {"legacy security", {"a", "security", log_kind::evt}, "ptl.c..", "ptl.c.."},
      {"system: no clock changes", {"a", "system", log_kind::evtx}, ".t.s..u", "...s..u"},
      {"legacy system: no USB", {"a", "system", log_kind::evt}, ".t.s...", "...s..."},
      {"a path speaks for a log in hand",
       {"X/SECURITY.EVTX", "any", log_kind::evtx},
       ".......",
       "ptl.c.."},
      {"to clock changes a part of it",
       {"security/a", "any", log_kind::evtx},
       ".......",
       ".t....."},
      {"partition log: nothing for USB",
       {"a", "microsoft-windows-partition/diagnostic", log_kind::evtx},
       ".....mu",
       ".....m."},
      {"no legacy partition log", {"a", "windows-partition", log_kind::evt}, ".......", ".....m."},
      {"drivers", {"a", "driverframeworks", log_kind::evtx}, "......u", "......u"},
      {"devices", {"a", "microsoft-windows-kernel-pnp/x", log_kind::evtx}, "......u", "......u"},
      {"a channel beside system", {"a", "my-system", log_kind::evtx}, ".......", "......u"},
      {"another", {"a", "application", log_kind::evtx}, ".......", "......."},
  };
  for (const row& r : rows) {
    EXPECT_EQ(letters([&](builtin_report report) {
                return report_concerns_log(report, r.log.channel, r.log.kind == log_kind::evtx);
              }),
              r.concerned)
        << r.reason;
    EXPECT_EQ(letters([&](builtin_report report) { return !report_lines(report, r.log).empty(); }),
              r.lines)
        << r.reason;
  }
}

// A summary of a report's commands for a log.
struct report_summary {
  std::size_t commands = 0;
  std::set<std::uint64_t> ids;
  std::size_t columns = 0;  // named ones
};

report_summary summary_of(builtin_report report, const log_source& log) {
  CommandList list;
  read_command_lines(list, report_lines(report, log));
  log_source hand = log;
  const selection_options selection;
  const output_format format;
  const std::vector<std::string> no_fields;
  const log_classifier classify = [&](log_source& found, const std::string&) {
    found = log;
    return true;
  };
  CommandSet set;
  build_command_set(set, list, {hand, selection, format, no_fields, classify}, false);
  report_summary sum;
  for (const auto& [path, command] : set) {
    ++sum.commands;
    sum.ids.insert(command.event_id);
    sum.columns += command.pull.size();
    EXPECT_FALSE(command.name.empty());
    EXPECT_TRUE((log.kind == log_kind::evtx) ==
                (command.all_data || command.translators.size() == 6));
  }
  return sum;
}

// Each line of a table becomes a command for its kind of log.
TEST(builtin_reports, every_line_is_a_command) {
  const log_source evt{"a", "security", log_kind::evt}, evtx{"a", "security", log_kind::evtx};
  const log_source system_evt{"a", "system", log_kind::evt},
      system_evtx{"a", "system", log_kind::evtx};
  struct row {
    builtin_report report;
    const log_source& log;
    std::size_t commands, ids, columns;
  };
  const log_source drivers{"a", "driverframeworks", log_kind::evtx};
  const log_source devices{"a", "windows-kernel-pnp", log_kind::evtx};
  const log_source partition{"a", "windows-partition", log_kind::evtx};
  const row rows[] = {
      {builtin_report::pw, evt, 4, 4, 1 + 7 + 6 + 16},
      {builtin_report::pw, evtx, 4, 4, 0},
      {builtin_report::time, evt, 3, 3, 12 + 9 + 10},
      {builtin_report::time, evtx, 3, 3, 0},
      // Of the failed logons, nine have 13 columns and that of an error 15.
      {builtin_report::logon, evt, 14, 14, 15 + 9 * 13 + 15 + 4 + 15 + 12},
      {builtin_report::logon, evtx, 12, 4, 0},
      {builtin_report::startstop, system_evtx, 5, 5, 3},
      // Of id 629, one column is named "-pull" and one is lost.
      {builtin_report::creds, evt, 17, 17, 5 * 5 - 1 + 2 * 25 + 7 * 6 + 3 * 7 + 8 - 6},
      {builtin_report::creds, evtx, 18, 18, 0},
      {builtin_report::usb, system_evtx, 7, 7, 0},
      {builtin_report::usb, drivers, 15, 15, 0},
      {builtin_report::usb, devices, 2, 2, 0},
      {builtin_report::partition_metadata, partition, 1, 1, 10 + 6},
  };
  for (const row& r : rows) {
    const report_summary sum = summary_of(r.report, r.log);
    const std::string which = letters([&](builtin_report report) { return report == r.report; });
    EXPECT_EQ(sum.commands, r.commands) << which << r.log.channel;
    EXPECT_EQ(sum.ids.size(), r.ids) << which << r.log.channel;
    EXPECT_EQ(sum.columns, r.columns) << which << r.log.channel;
  }
}

}  // namespace
}  // namespace zanvik
