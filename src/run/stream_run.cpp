#include "run/stream_run.h"

#include <sys/stat.h>

#include <cstring>
#include <string>

#include "base/console.h"
#include "base/path_text.h"
#include "base/text.h"
#include "options/dir_walk.h"
#include "options/file_match.h"
#include "run/log_threads.h"
#include "run/run_reports.h"
#include "run/stats_file.h"

namespace zanvik {
namespace {

// Prints a message about a log; on a terminal it takes one line.
void tell_progress(const char* what, const std::string& name) {
  const std::string shown = path_for_message(name, std::strlen(what));
  prob_message("%s%s\n", what, shown.c_str());
}

// Shows the current log: its whole name as a message, and a short one as the status line.
void announce(const std::string& file_name) {
  constexpr int status_width = 40;
  std::string shown = file_name;
  remove_char(shown, '%');
  tell_progress("analyzing: ", file_name);
  print_status(status_width, "analyzing: %s", shown.substr(0, status_width).c_str());
}

// An existing name is taken literally, whatever it looks like; others may refer to the environment.
std::string path_of(const std::string& name) {
  struct stat status = {};
  return ::stat(name.c_str(), &status) == 0 ? name : expand_env_references(name, true);
}

bool run_log(const std::string& path, log_run& run) {
  const evt_output_options& options = run.options;
  run.log.path = path;
  std::string folder;
  std::string file_name;
  if (!split_path(path, folder, file_name)) return false;
  LogEntry entry;
  if (!classify_log(entry, path, run.probe)) {
    // A folder has other files too; a file that is named like a log, or by the user, should be one.
    const std::string lower = to_lower(file_name);
    if (options.walk.pipe || lower.ends_with(".evtx") || lower.ends_with(".evt")) {
      run.strict.add(path + " is no event log, or cannot be read");
    }
    return false;
  }
  run.logs.clear();
  run.logs.emplace(path, entry);
  init_statistics(run.statistics, path, entry.channel, entry.is_evtx,
                  options.hist_fields.empty() ? 0 : 1, "", "");
  run.log.inode = 0;
  if (options.show_status) announce(file_name);
  diag_line(options.trace, "analyzing: %s", file_name.c_str());
  const bool any_results = run_reports(run);
  if (options.show_status) tell_progress("processed log ", run.log.path);
  write_run_statistics(run);
  return any_results;
}

// An error in a log costs that log.
bool try_log(const std::string& path, log_run& run) {
  try {
    return run_log(path, run);
  } catch (...) {
    prob_message("exception caught on file %s\n", run.log.path.c_str());
    return false;
  }
}

bool start(qxportdir::stdin_stream_ex& names, const walk_options& walk) {
  if (walk.pipe) return names.start_stdin();
  return names.start_walk(walk.enum_dir, walk.num_subdirs, walk.file_filters);
}

}  // namespace

void run_stream(log_run& run) {
  const walk_options& walk = run.options.walk;
  qxportdir::stdin_stream_ex names(walk);
  if (!start(names, walk)) return;
  std::string name;
  while (!run.ends_early() && names.read_line(name, true)) {
    bool undecided = false;
    // The window of file times is for the walk: a name alone has none.
    if (name.empty() || !match_filters(walk, undecided, name, walk.file_filters, nullptr)) continue;
    const std::string path = path_of(name);
    (void)read_log(run, path, [path](log_run& reading) { return try_log(path, reading); });
  }
  (void)finish_logs(run);
}

}  // namespace zanvik
