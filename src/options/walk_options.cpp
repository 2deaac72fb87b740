#include "options/walk_options.h"

#include <limits>
#include <optional>
#include <string_view>

#include "base/console.h"
#include "base/text.h"
#include "base/time_parse.h"
#include "base/time_value.h"
#include "base/utf16.h"

namespace zanvik {
namespace {

// Takes each occurrence of `name`, and then one path for all of its terms: the first path of the
// list goes to the first that takes one.
void take_filter_terms(std::string_view name, argument_list& argv_list,
                       std::vector<file_filter_entry>& out) {
  std::string value;
  while (take_value_option(name, value, argv_list)) parse_filter_list(value, out);
  if (out.empty() || !take_value_option("-filter_path", value, argv_list)) return;
  const std::string path = is_strict_utf8(value) ? to_lower(value) : std::string();
  for (file_filter_entry& entry : out) entry.path = path;
}

// Reads "Y-M-D" or "Y/M/D", with a time after the first blank, else with `default_time`. Nothing if
// it is not written like that; otherwise a time, which need not be valid.
std::optional<qx::time> file_time_from_text(std::string_view value, std::string_view default_time) {
  const std::size_t blank = value.find(' ');
  const std::string_view date = value.substr(0, blank);
  const std::string_view clock =
      blank == std::string_view::npos ? default_time : value.substr(blank + 1);
  const std::size_t slash = date.find('/');
  if (slash == std::string_view::npos && date.find('-') == std::string_view::npos) return {};
  qx::_windows_systemtime parts;
  const char separator = slash == std::string_view::npos ? '-' : '/';
  if (!parse_date_ymd(date, clock, "YMD", separator, parts)) return {};
  return qx::time(system_to_filetime(parts), qx::type_time::filetime);
}

file_time_bound bound_at(const qx::time& time) {
  return {true, time.filetime(), static_cast<std::uint32_t>(time.unix_seconds())};
}

bool take_start_time(argument_list& argv_list, walk_options& out) {
  std::string value;
  if (!take_value_option("-cmd_start_time", value, argv_list)) return true;
  const auto time = file_time_from_text(value, "");
  if (!time) return false;
  if (!time->valid()) {
    prob_message("invalid start time, ignoring\n");
    return true;
  }
  out.cmd_start = bound_at(*time);
  out.cmd_stop = {true, std::numeric_limits<std::uint64_t>::max(),
                  std::numeric_limits<std::uint32_t>::max()};
  return true;
}

bool take_stop_time(argument_list& argv_list, walk_options& out) {
  std::string value;
  if (!take_value_option("-cmd_stop_time", value, argv_list)) return true;
  out.cmd_stop = {};
  const auto time = file_time_from_text(value, "23:59:59");
  if (!time) return false;
  if (!time->valid() || (out.cmd_start.on && time->filetime() < out.cmd_start.filetime)) {
    prob_message("invalid stop time, ignoring\n");
    return true;
  }
  out.cmd_stop = bound_at(*time);
  return true;
}

}  // namespace

void take_filter_options(argument_list& argv_list, walk_options& out) {
  take_filter_terms("-filter_skip", argv_list, out.skip_filters);
  take_filter_terms("-filter", argv_list, out.file_filters);
  std::string value;
  while (take_value_option("-filter_sig", value, argv_list)) {
    parse_signature_filter(value, out.file_filters);
  }
}

bool take_file_time_options(argument_list& argv_list, walk_options& out) {
  return take_start_time(argv_list, out) && take_stop_time(argv_list, out);
}

}  // namespace zanvik
