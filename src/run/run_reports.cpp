#include "run/run_reports.h"

#include <utility>

#include "base/diag.h"
#include "base/text.h"
#include "run/command_run.h"
#include "run/log_threads.h"
#include "run/report_runs.h"

namespace zanvik {

CommandSet listing_commands(const evt_output_options& options, const LogEntry& log) {
  ReportCommand command;
  command.all_data = true;
  command.skip_system_fields = true;
  command.log_path = log.path;
  command.start_time = options.selection.start_time;
  command.stop_time = options.selection.stop_time;
  command.string_exists = options.selection.substring;
  command.has_hist = !options.hist_fields.empty();
  for (const std::string& field : options.hist_fields) {
    command.hist_fields.push_back(field);
    command.hist_fields_lower.push_back(to_lower(field));
  }
  CommandSet set;
  for (const std::uint64_t event_id : options.selection.event_ids) {
    command.event_id = event_id;
    command.hist_index = static_cast<std::int32_t>(set.size());
    set.emplace(log.path, command);
  }
  return set;
}

namespace {

bool run_listing(log_run& run) {
  bool any_results = false;
  for (const auto& [path, log] : run.logs) {
    if (run.ends_early()) break;
    diag_line(run.options.trace, "analyzing: %s", path.c_str());
    const auto list = [&log = log](log_run& reading) {
      reading.log = source_of(log);
      return run_command_set(listing_commands(reading.options, log), reading);
    };
    any_results = read_log(run, path, list) || any_results;
  }
  return finish_logs(run) || any_results;
}

}  // namespace

bool run_reports(log_run& run) {
  bool any_results = run_builtin_reports(run);
  any_results = run_command_file(run) || any_results;
  return (run.options.all_records && run_listing(run)) || any_results;
}

}  // namespace zanvik
