// The option pass about logs, around the shared one.
#include <string_view>

#include "base/console.h"
#include "base/number_text.h"
#include "base/text.h"
#include "base/text_split.h"
#include "base/time_value.h"
#include "options/csv_separator.h"
#include "run/evt_output_options.h"
#include "run/input_guard.h"

namespace zanvik {
namespace {

// Numbers separated by `,`, else by `|`, else by blanks; items that are not numbers are left out.
std::vector<std::uint64_t> numbers_from_list(const std::string& value) {
  char separator = ' ';
  if (value.find(',') != std::string::npos) {
    separator = ',';
  } else if (value.find('|') != std::string::npos) {
    separator = '|';
  }
  std::vector<std::int64_t> numbers;
  parse_number_list(value, numbers, separator);
  return {numbers.begin(), numbers.end()};
}

// Sets `bound` if `name` gives a usable time; otherwise leaves it unchanged without a message.
void take_time_bound(std::string_view name, argument_list& argv_list, std::uint64_t& bound,
                     strict_notes& strict) {
  std::string value;
  if (!take_value_option(name, value, argv_list)) return;
  const qx::time time(value, true);
  if (time.valid()) {
    bound = time.filetime();
  } else {
    strict.add(std::string(name) + " " + value + " is no time (MM/DD/YYYY HH:MM:SS) and no bound");
  }
}

// The items of a list that numbers_from_list leaves out.
void check_numbers(const std::string& value, strict_notes& strict) {
  std::vector<std::string> items;
  const char separator = value.find(',') != std::string::npos   ? ','
                         : value.find('|') != std::string::npos ? '|'
                                                                : ' ';
  split_on_char(value, separator, items, true, false, false);
  for (const std::string& item : items) {
    if (!is_whole_number(item)) strict.add("-eventid: " + item + " is no number");
  }
}

// Words that are left after all options were taken.
void check_left_words(const argument_list& argv_list, strict_notes& strict) {
  for (std::size_t i = 1; i < argv_list.size(); ++i) {
    strict.add("\"" + argv_list[i] + "\" is unknown or has no effect here");
  }
}

// Before any file is opened for writing: none of them may be one that the run reads.
bool would_overwrite_input(const argument_list& argv_list) {
  const auto clash = find_output_over_input(argv_list);
  if (!clash) return false;
  prob_message("prob %s %s would overwrite %s, aborting\n", clash->option.c_str(),
               clash->path.c_str(),
               clash->certain ? "an input of this run" : "an event log, which this run may read");
  return true;
}

}  // namespace

void evt_output_options::take_selection_options(argument_list& argv_list) {
  std::string value;
  if (take_value_option("-eventid", value, argv_list)) {
    selection.event_ids = numbers_from_list(value);
    check_numbers(value, strict);
  }
  for (const char* name : {"-rec_id", "-rec_start", "-rec_stop"}) {
    if (has_option_from(name, argv_list, 1)) strict.add(std::string(name) + " selects nothing");
  }
  if (take_value_option("-rec_id", value, argv_list)) {
    selection.record_ids = numbers_from_list(value);
    selection.record_range_on = true;
  }
  if (take_value_option("-rec_start", value, argv_list)) {
    selection.record_start = u64_from_text(value).value_or(0);
    selection.record_stop = selection_options::all_ones;
    selection.record_range_on = true;
  }
  if (take_value_option("-rec_stop", value, argv_list)) {
    selection.record_stop = u64_from_text(value).value_or(selection.record_stop);
    selection.record_range_on = true;
  }
  (void)take_value_option("-createlog", create_log_path, argv_list);
  take_time_bound("-start_time", argv_list, selection.start_time, strict);
  take_time_bound("-stop_time", argv_list, selection.stop_time, strict);
  (void)take_value_option("-string", selection.substring, argv_list);
}

void evt_output_options::take_report_options(argument_list& argv_list) {
  struct report_option {
    std::string_view name;
    bool report_flags::*flag;
  };
  static constexpr report_option report_options[] = {
      {"-pw", &report_flags::pw},
      {"-time", &report_flags::time},
      {"-logon", &report_flags::logon},
      {"-startstop", &report_flags::startstop},
      {"-creds", &report_flags::creds},
      {"-usb", &report_flags::usb},
      {"-partition_metadata", &report_flags::partition_metadata},
  };
  all_records = true;
  for (const report_option& option : report_options) {
    if (!take_flag_option(option.name, argv_list)) continue;
    reports.*option.flag = true;
    all_records = false;
  }
}

bool evt_output_options::parse_log_options(argument_list& argv_list, std::string_view version_text,
                                           std::string_view title_text) {
  format.output_csv = true;
  format.base16 = false;
  if (would_overwrite_input(argv_list) || !parse_options(argv_list)) return false;
  // Once more for what the shared pass chose: a comma in a field now becomes a semicolon.
  set_csv_separator(format, format.csv_separator, true);
  version = version_text;
  title = title_text;
  if (format.output_bodyfile) allparams = take_flag_option("-allparams", argv_list);
  if (format.output_bodyfile || format.output_l2t) {
    one_timeline = take_flag_option("-one_timeline", argv_list);
  }
  take_selection_options(argv_list);
  take_report_options(argv_list);
  show_offsets = take_flag_option("-show_offsets", argv_list);
  inc_slack = take_flag_option("-inc_slack", argv_list);
  reading.event_time = take_flag_option("-event_time", argv_list);
  reading.full_sids = take_flag_option("-full_sids", argv_list);
  std::string value;
  if (take_value_option("-stats", stats_file, argv_list)) {
    stats_on = true;
    if (take_value_option("-hist", value, argv_list)) {
      split_on_char(value, '|', hist_fields, true, false, false);
    }
  }
  if (take_value_option("-cmdfile", cmd_file, argv_list)) all_records = false;
  (void)take_value_option("-log", log_names, argv_list);
  // Whatever chose the separator: if no column is padded, it has no blanks.
  if (format.no_whitespace) remove_char(format.csv_separator, ' ');
  const bool is_strict = take_flag_option("-strict", argv_list);
  check_left_words(argv_list, strict);
  if (!format.output_csv && !format.output_l2t && !format.output_bodyfile) {
    strict.add("this form of output writes no records");
  }
  strict.decide(is_strict);
  return true;
}

}  // namespace zanvik
