// The options of a run, shared ones and those about logs. The passes fill it, and then it does not
// change; state that changes is in log_run.h. Only `run/` sees the whole; each stage gets the part
// that it reads.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "evtx/record_reader.h"
#include "options/cmd_params.h"
#include "options/selection_options.h"

namespace zanvik {

// The built-in reports that were requested.
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
  // Runs the shared pass and then takes the options about logs. `version_text` and `title_text` are
  // stored. Returns false if the run must not continue.
  [[nodiscard]] bool parse_log_options(argument_list& argv_list, std::string_view version_text,
                                       std::string_view title_text);

  selection_options selection;
  report_flags reports;
  bool all_records = true;  // no report was requested: the plain listing
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
