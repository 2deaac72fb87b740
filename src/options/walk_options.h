// The options that decide where the names of logs come from in a stream run, and which files pass.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "base/file_filter.h"
#include "options/argument_list.h"

namespace zanvik {

// One end of the window of `-cmd_start_time` and `-cmd_stop_time`, inclusive.
struct file_time_bound {
  bool on = false;
  std::uint64_t filetime = 0;
  std::uint32_t unix_seconds = 0;
};

struct walk_options {
  bool pipe = false;          // names come from standard input
  bool enum_dir_set = false;  // names come from a folder walk at `enum_dir`, unless `pipe` is set
  std::string enum_dir;
  std::int32_t num_subdirs = 0;  // depth of the walk; 0 is the folder alone
  std::vector<file_filter_entry> file_filters;
  std::vector<file_filter_entry> skip_filters;  // accepted, but nothing reads it
  file_time_bound cmd_start;
  file_time_bound cmd_stop;

  bool is_stream_run() const { return pipe || enum_dir_set; }
};

// Takes `-filter_skip`, `-filter`, `-filter_path` and `-filter_sig` from the list.
void take_filter_options(argument_list& argv_list, walk_options& out);

// Takes the two bounds of the file times. Returns false if one is not written as a date.
[[nodiscard]] bool take_file_time_options(argument_list& argv_list, walk_options& out);

}  // namespace zanvik
