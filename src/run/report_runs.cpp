#include "run/report_runs.h"

#include <utility>

#include "base/diag.h"
#include "commands/builtin_reports.h"
#include "commands/command_build.h"
#include "commands/command_list.h"
#include "run/command_run.h"

namespace zanvik {
namespace {

bool classify(command_log& log, const std::string& path, log_probe& probe) {
  LogEntry entry;
  if (!classify_log(entry, path, probe)) return false;
  log = {entry.path, entry.channel, entry.is_evtx, entry.reserved};
  return true;
}

command_log log_in_hand(const evt_output_options& options) {
  return {options.current_log_path, options.current_log_channel, options.current_log_is_evtx,
          options.current_log_reserved};
}

// Adds the commands for the log in hand to `set`. A command that names a log of its own may make
// that the log in hand.
bool build_commands(CommandSet& set, const CommandList& list, evt_output_options& options,
                    bool append) {
  command_log log = log_in_hand(options);
  const log_classifier classifier = [&options](command_log& named, const std::string& path) {
    return classify(named, path, options.probe);
  };
  const command_context context{log, options.selection, options.format, options.hist_fields,
                                classifier};
  const bool built = build_command_set(set, list, context, append);
  options.current_log_path = std::move(log.path);
  options.current_log_channel = std::move(log.channel);
  options.current_log_is_evtx = log.is_evtx;
  options.current_log_reserved = log.reserved;
  return built;
}

bool run_report(builtin_report report, evt_output_options& options) {
  CommandList list;
  read_command_lines(list, report_lines(report, log_in_hand(options)));
  CommandSet set;
  return build_commands(set, list, options, true) && run_command_set(set, options);
}

struct report_runner {
  builtin_report report;
  bool report_flags::*asked_for;
  bool (*run)(evt_output_options&);
};

// In the order in which reports are made, whatever the order of the options.
constexpr report_runner runners[] = {
    {builtin_report::pw, &report_flags::pw, run_pw},
    {builtin_report::time, &report_flags::time, run_time},
    {builtin_report::logon, &report_flags::logon, run_logon},
    {builtin_report::startstop, &report_flags::startstop, run_startstop},
    {builtin_report::creds, &report_flags::creds, run_creds},
    {builtin_report::partition_metadata, &report_flags::partition_metadata, run_partition},
    {builtin_report::usb, &report_flags::usb, run_usb},
};

// Makes `log` the log in hand for a report of its own.
void start_log(const LogEntry& log, evt_output_options& options) {
  options.record_writer_first = true;
  options.set_current_log(log);
}

}  // namespace

bool run_pw(evt_output_options& options) { return run_report(builtin_report::pw, options); }
bool run_time(evt_output_options& options) { return run_report(builtin_report::time, options); }
bool run_logon(evt_output_options& options) { return run_report(builtin_report::logon, options); }
bool run_startstop(evt_output_options& options) {
  return run_report(builtin_report::startstop, options);
}
bool run_creds(evt_output_options& options) { return run_report(builtin_report::creds, options); }
bool run_partition(evt_output_options& options) {
  return run_report(builtin_report::partition_metadata, options);
}
bool run_usb(evt_output_options& options) { return run_report(builtin_report::usb, options); }

bool run_builtin_reports(evt_output_options& options) {
  bool any_results = false;
  for (const report_runner& runner : runners) {
    if (!(options.reports.*runner.asked_for)) continue;
    for (const auto& [path, log] : options.log_table) {
      if (!report_concerns_log(runner.report, log.channel, log.is_evtx)) continue;
      start_log(log, options);
      any_results = runner.run(options) || any_results;
    }
  }
  return any_results;
}

bool run_command_file(evt_output_options& options) {
  if (options.cmd_file.empty()) return false;
  CommandList list;
  read_command_file(list, options.cmd_file);
  if (list.empty()) return false;
  bool any_results = false;
  CommandSet set;
  for (const auto& [path, log] : options.log_table) {
    start_log(log, options);
    if (!build_commands(set, list, options, false)) continue;
    diag_line(options.trace, "analyzing: %s", path.c_str());
    any_results = run_command_set(set, options) || any_results;
  }
  return any_results;
}

}  // namespace zanvik
