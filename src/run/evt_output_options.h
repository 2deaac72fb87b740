// All options and state of a run: what is shared by command-line runs, and what is about logs.
// The passes fill it, `run/` alone sees the whole, and each stage is handed the part it reads.
#pragma once

#include <cstdint>
#include <ostream>
#include <string>
#include <string_view>
#include <vector>

#include "events/log_record.h"
#include "evtx/record_reader.h"
#include "keep/plan_cache.h"
#include "options/cmd_params.h"
#include "options/selection_options.h"
#include "output/tables/table_cache.h"
#include "run/log_list.h"
#include "stats/log_statistics.h"

namespace zanvik {

// The built-in reports that were asked for.
struct report_flags {
  bool pw = false;
  bool time = false;
  bool logon = false;
  bool startstop = false;
  bool creds = false;
  bool usb = false;
  bool partition_metadata = false;
};

class evt_output_options : public cmd_params {
 public:
  // Runs the shared pass and then takes the options about logs. `version_text` and `title_text`
  // are stored. Returns false when the run must not go on.
  [[nodiscard]] bool parse_log_options(argument_list& argv_list, std::string_view version_text,
                                       std::string_view title_text);

  // Makes `entry` the log in hand.
  void set_current_log(const LogEntry& entry);

  selection_options selection;
  report_flags reports;
  bool all_records = true;  // no report was asked for: the plain listing
  std::string cmd_file;
  std::string create_log_path;
  bool allparams = false;
  bool show_offsets = false;
  bool inc_slack = false;
  reader_options reading;  // `-event_time`, `-full_sids`

  bool stats_on = false;
  std::string stats_file;
  std::ostream* stats_stream = nullptr;  // the open statistics file; null when there is none
  std::vector<std::string> hist_fields;
  LogStatistics statistics;  // of the log walked last

  log_map log_table;
  LogEntry scratch_log_entry;
  log_probe probe;
  std::string current_log_path;
  std::string current_log_channel;
  bool current_log_is_evtx = true;
  std::uint64_t current_log_reserved = 0;  // see `LogEntry::reserved`
  bool record_writer_first = true;         // on in every run, so that nobody has to ask
  std::ostream* results_stream = nullptr;  // set once by the driver
  // The walker's state: what is known of templates serves all logs of a run.
  record_reader reader{format};
  // The records of the log in hand; what records share stays for the logs behind it.
  record_container records;
  plan_cache plans;
  table_cache tables;

 private:
  void take_selection_options(argument_list& argv_list);
  void take_report_options(argument_list& argv_list);
};

}  // namespace zanvik
