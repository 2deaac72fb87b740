#include "run/stats_file.h"

#include <sys/stat.h>

#include <string>

#include "base/path_text.h"
#include "base/utf16.h"

namespace zanvik {

bool open_stats_file(evt_output_options& options, std::ofstream& stream) {
  if (!options.stats_on || !is_strict_utf8(options.stats_file)) return false;
  std::string folder;
  std::string name;
  if (!split_path(options.stats_file, folder, name)) return false;
  struct stat status = {};
  if (::stat(folder.c_str(), &status) != 0) return false;
  stream.open(options.stats_file, std::ios::out | std::ios::trunc);
  if (!stream) {
    options.stats_on = false;
    options.stats_file.clear();
  }
  options.stats_stream = &stream;
  return true;
}

void write_run_statistics(evt_output_options& options) {
  if (!options.stats_on || !options.stats_stream || !*options.stats_stream) return;
  write_statistics(options.statistics, *options.stats_stream);
}

}  // namespace zanvik
