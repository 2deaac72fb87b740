// The options of a run: what is shared by command-line runs, and what is about logs. The passes
// fill it, and then it does not change; what changes in a run is in log_run.h. `run/` alone sees
// the whole, and each stage is handed the part it reads.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "evtx/record_reader.h"
#include "options/cmd_params.h"
#include "options/selection_options.h"

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

  selection_options selection;
  report_flags reports;
  bool all_records = true;  // no report was asked for: the plain listing
  std::string cmd_file;
  std::string create_log_path;
  bool allparams = false;
  bool one_timeline = false;  // lines of all logs in one order of time
  bool show_offsets = false;
  bool inc_slack = false;
  reader_options reading;  // `-event_time`, `-full_sids`

  bool stats_on = false;
  std::string stats_file;
  std::vector<std::string> hist_fields;

  std::string log_names;  // the value of `-log`

 private:
  void take_selection_options(argument_list& argv_list);
  void take_report_options(argument_list& argv_list);
};

}  // namespace zanvik
