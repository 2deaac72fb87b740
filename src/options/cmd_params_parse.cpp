// The shared option pass. The order of its steps decides every conflict between options, and which
// word is taken as the value of which option.
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <initializer_list>
#include <string_view>

#include "base/console.h"
#include "base/fileio.h"
#include "base/number_text.h"
#include "base/path_text.h"
#include "base/text.h"
#include "base/time_format.h"
#include "options/cmd_params.h"
#include "options/output_options.h"

namespace zanvik {
namespace {

// The value that take_value_option would return, which stays in the list; empty if there is none.
std::string value_ahead(std::string_view name, argument_list argv_list) {
  std::string value;
  (void)take_value_option(name, value, argv_list);
  return value;
}

bool refuses_sqlite(argument_list& argv_list) {
  std::string ignored;
  if (!take_value_option("-sqlite_log", ignored, argv_list) &&
      !take_value_option("-sqlite", ignored, argv_list)) {
    return false;
  }
  prob_message("This option is not offered in this build\n");
  return true;
}

// The file name of `path` without its last extension.
std::string name_of_program(const std::string& path) {
  const std::size_t slash = path.rfind('/');
  const std::string name = slash == std::string::npos ? path : path.substr(slash + 1);
  return name.substr(0, name.rfind('.'));
}

// True if `path` can be written to. The file is always deleted again, so `append` keeps nothing of
// it: the results start empty. Anything but a regular file is left alone.
bool probe_results_file(const std::string& path, bool append) {
  uni::fileio file;
  if (!(append && file.open(path, uni::open_mode::update)) &&
      !file.open(path, uni::open_mode::replace)) {
    return false;
  }
  const std::string opened = file.path();
  file.close();
  struct stat status = {};
  if (::lstat(opened.c_str(), &status) == 0 && S_ISREG(status.st_mode)) ::unlink(opened.c_str());
  return true;
}

void take_stream_options(argument_list& argv_list, walk_options& out, strict_notes& strict) {
  std::string value;
  if (take_value_option("-enumdir", value, argv_list)) {
    out.enum_dir_set = true;
    out.enum_dir = expand_env_references(value, true);
  }
  if (take_value_option("-num_subdirs", value, argv_list)) {
    const auto depth = unsigned_from_text(value);
    if (!is_whole_number(value)) strict.add("-num_subdirs " + value + " is no number");
    out.num_subdirs = static_cast<std::int32_t>(depth.value_or(0));
  }
}

}  // namespace

// Options that mean nothing here: removed, with their values.
void cmd_params::drop_values(std::initializer_list<std::string_view> names,
                             argument_list& argv_list) {
  std::string ignored;
  for (const std::string_view name : names) {
    if (!take_value_option(name, ignored, argv_list)) continue;
    strict.add("option " + std::string(name) + " does nothing");
  }
}

void cmd_params::drop_flags(std::initializer_list<std::string_view> names,
                            argument_list& argv_list) {
  for (const std::string_view name : names) {
    if (!take_flag_option(name, argv_list)) continue;
    strict.add("option " + std::string(name) + " does nothing");
  }
}

bool cmd_params::take_checked_file_times(argument_list& argv_list) {
  const std::string start = value_ahead("-cmd_start_time", argv_list);
  const std::string stop = value_ahead("-cmd_stop_time", argv_list);
  if (!take_file_time_options(argv_list, walk)) return false;
  if (!start.empty() && !walk.cmd_start.on) strict.add("-cmd_start_time " + start + " is no time");
  if (!stop.empty() && !walk.cmd_stop.on) {
    strict.add("-cmd_stop_time " + stop + " is no time, or before the start");
  }
  return true;
}

void cmd_params::take_checked_text_options(argument_list& argv_list) {
  const std::string date = value_ahead("-dateformat", argv_list);
  const std::string time = value_ahead("-timeformat", argv_list);
  take_text_options(argv_list, format);
  // A date format of good length and bad content leaves a partly filled digest, without a message.
  const bool usable = build_format_descriptor(format.descriptor, format.date_format,
                                              format.time_format, format.pair_datetime);
  if (!date.empty() && (!usable || format.date_format != to_lower(date))) {
    strict.add("-dateformat " + date + " is no format of dates");
  }
  if (!time.empty() && format.time_format != to_lower(time)) {
    strict.add("-timeformat " + time + " is no format of times");
  }
}

void cmd_params::take_trace_options(argument_list& argv_list) {
  std::string path;
  if (take_value_option("-diags", path, argv_list)) {
    trace.open(path);
    if (trace.diags_on) *trace.diag_stream << "->" << command_line << '\n' << std::flush;
  }
  if (take_flag_option("-l2", argv_list)) {
    trace.diag_level = 2;
  } else if (take_flag_option("-l3", argv_list)) {
    trace.diag_level = 3;
  }
}

// What is no number of threads is swallowed.
void cmd_params::take_threads_option(argument_list& argv_list) {
  std::string value;
  if (!take_value_option("-threads", value, argv_list)) return;
  const std::int32_t number = signed_from_text(value).value_or(0);
  if (number > 0) {
    threads = static_cast<unsigned>(number);
  } else {
    strict.add("-threads " + value + " is no number of threads");
  }
}

bool cmd_params::take_results_file(argument_list& argv_list) {
  std::string value;
  if (!take_value_option("-out", value, argv_list) &&
      !take_value_option("-outfile", value, argv_list)) {
    return true;
  }
  out_file = expand_env_references(value, true);
  std::replace(out_file.begin(), out_file.end(), '\\', '/');
  if (probe_results_file(out_file, has_option_from("-append", argv_list, 1))) return true;
  prob_message("prob opening file %s for output, aborting\n", out_file.c_str());
  return false;
}

bool cmd_params::parse_options(argument_list& argv_list) {
  if (argv_list.empty()) return false;
  if (command_line.empty()) command_line = command_line_text(argv_list, '"');
  if (program_name.empty()) program_name = name_of_program(argv_list.front());

  format.pair_datetime = take_flag_option("-pair_datetime", argv_list);
  take_trace_options(argv_list);
  take_form_options(argv_list, format);
  if (!take_alias_options(argv_list, format)) return false;
  drop_flags({"-gzip", "-zlib"}, argv_list);
  take_threads_option(argv_list);
  drop_flags({"-zlibex"}, argv_list);
  if (refuses_sqlite(argv_list)) return false;
  (void)take_value_option("-signal", signal_name, argv_list);
  (void)take_value_option("-hostname", hostname, argv_list);
  drop_flags({"-split_pathfile"}, argv_list);
  (void)take_value_option("-username", username, argv_list);
  drop_values({"-cpuinst", "-cpu", "-fragment_files"}, argv_list);
  drop_flags({"-separate_files"}, argv_list);
  if (!take_results_file(argv_list)) return false;
  drop_values({"-outdir"}, argv_list);
  take_stream_options(argv_list, walk, strict);
  profile = take_flag_option("-profile", argv_list);
  walk.pipe = take_flag_option("-pipe", argv_list);
  take_filter_options(argv_list, walk);
  if (!take_checked_file_times(argv_list)) return false;
  take_checked_text_options(argv_list);
  if (has_option_from("-verbose", argv_list, 0)) {
    drop_flags({"-verbose"}, argv_list);
  } else {
    drop_flags({"-v"}, argv_list);
  }
  show_status = !take_flag_option("-quiet", argv_list);
  return true;
}

}  // namespace zanvik
