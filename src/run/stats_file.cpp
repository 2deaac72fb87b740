#include "run/stats_file.h"

#include <sys/stat.h>

#include <string>

#include "base/path_text.h"
#include "base/utf16.h"

namespace zanvik {

bool open_stats_file(log_run& run, std::ofstream& stream) {
  const std::string& path = run.options.stats_file;
  if (!run.options.stats_on || !is_strict_utf8(path)) return false;
  std::string folder;
  std::string name;
  if (!split_path(path, folder, name)) return false;
  struct stat status = {};
  if (::stat(folder.c_str(), &status) != 0) return false;
  stream.open(path, std::ios::out | std::ios::trunc);
  run.counts = stream.is_open();
  if (run.counts) run.stats = &stream;
  return true;
}

void write_run_statistics(log_run& run) {
  if (run.stats && *run.stats) write_statistics(run.statistics, *run.stats);
}

}  // namespace zanvik
