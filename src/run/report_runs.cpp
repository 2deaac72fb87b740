#include "run/report_runs.h"

#include <algorithm>
#include <iterator>
#include <utility>

#include "base/diag.h"
#include "commands/builtin_reports.h"
#include "commands/command_build.h"
#include "commands/command_check.h"
#include "commands/command_list.h"
#include "run/command_run.h"
#include "run/log_threads.h"

namespace zanvik {
namespace {

bool classify(log_source& log, const std::string& path, log_probe& probe) {
  LogEntry entry;
  if (!classify_log(entry, path, probe)) return false;
  log = source_of(entry);
  return true;
}

// Adds the commands for the current log to `set`. A command that names its own log may make that
// the current log.
bool build_commands(CommandSet& set, const CommandList& list, log_run& run, bool append) {
  const log_classifier classifier = [&run](log_source& named, const std::string& path) {
    return classify(named, path, run.probe);
  };
  const command_context context{run.log, run.options.selection, run.options.format,
                                run.options.hist_fields, classifier};
  return build_command_set(set, list, context, append);
}

bool run_report(builtin_report report, log_run& run) {
  CommandList list;
  read_command_lines(list, report_lines(report, run.log));
  CommandSet set;
  return build_commands(set, list, run, true) && run_command_set(set, run);
}

struct report_runner {
  builtin_report report;
  bool report_flags::*asked_for;
  bool (*make)(log_run&);
};

// In the order in which reports are run, whatever the order of the options.
constexpr report_runner runners[] = {
    {builtin_report::pw, &report_flags::pw, run_pw},
    {builtin_report::time, &report_flags::time, run_time},
    {builtin_report::logon, &report_flags::logon, run_logon},
    {builtin_report::startstop, &report_flags::startstop, run_startstop},
    {builtin_report::creds, &report_flags::creds, run_creds},
    {builtin_report::partition_metadata, &report_flags::partition_metadata, run_partition},
    {builtin_report::usb, &report_flags::usb, run_usb},
};

// Notes the logs that no report of this run is for.
void check_concerned_logs(log_run& run) {
  const report_flags& asked_for = run.options.reports;
  const auto is_made = [&](const report_runner& runner) { return asked_for.*runner.asked_for; };
  if (run.options.walk.is_stream_run() ||
      std::none_of(std::begin(runners), std::end(runners), is_made))
    return;
  for (const auto& entry : run.logs) {
    const LogEntry& log = entry.second;
    const auto concerns = [&](const report_runner& runner) {
      return is_made(runner) && report_concerns_log(runner.report, log.channel, log.is_evtx);
    };
    if (std::none_of(std::begin(runners), std::end(runners), concerns)) {
      run.strict.add(entry.first + ": no report is for this log");
    }
  }
}

}  // namespace

bool run_pw(log_run& run) { return run_report(builtin_report::pw, run); }
bool run_time(log_run& run) { return run_report(builtin_report::time, run); }
bool run_logon(log_run& run) { return run_report(builtin_report::logon, run); }
bool run_startstop(log_run& run) { return run_report(builtin_report::startstop, run); }
bool run_creds(log_run& run) { return run_report(builtin_report::creds, run); }
bool run_partition(log_run& run) { return run_report(builtin_report::partition_metadata, run); }
bool run_usb(log_run& run) { return run_report(builtin_report::usb, run); }

bool run_builtin_reports(log_run& run) {
  bool any_results = false;
  for (const report_runner& runner : runners) {
    if (!(run.options.reports.*runner.asked_for)) continue;
    for (const auto& [path, log] : run.logs) {
      if (run.ends_early()) return finish_logs(run) || any_results;
      if (!report_concerns_log(runner.report, log.channel, log.is_evtx)) continue;
      const auto make = [&runner, &log = log](log_run& reading) {
        reading.log = source_of(log);
        return runner.make(reading);
      };
      any_results = read_log(run, path, make) || any_results;
    }
  }
  any_results = finish_logs(run) || any_results;
  check_concerned_logs(run);
  return any_results;
}

bool run_command_file(log_run& run) {
  if (run.options.cmd_file.empty()) return false;
  CommandList list;
  read_command_file(list, run.options.cmd_file);
  check_command_file(list, run.options.cmd_file, run.strict);
  if (list.empty()) return false;
  bool any_results = false;
  for (const auto& [path, log] : run.logs) {
    if (run.ends_early()) break;
    const auto report = [&list, &path = path, &log = log](log_run& reading) {
      reading.log = source_of(log);
      CommandSet set;
      if (!build_commands(set, list, reading, false)) return false;
      if (reading.strict.is_strict()) note_used_commands(set, reading.used_commands);
      diag_line(reading.options.trace, "analyzing: %s", path.c_str());
      return run_command_set(set, reading);
    };
    any_results = read_log(run, path, report) || any_results;
  }
  return finish_logs(run) || any_results;
}

void check_command_use(log_run& run) {
  if (!run.strict.is_strict() || run.options.cmd_file.empty()) return;
  CommandList list;
  read_command_file(list, run.options.cmd_file);
  check_unused_commands(list, run.used_commands, run.strict);
}

}  // namespace zanvik
