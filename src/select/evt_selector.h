// The sink that tries each legacy .evt record against the commands of a log, in their order, and
// keeps it for the first that selects it.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "evt/evt.h"
#include "keep/evt_record_keeper.h"
#include "stats/log_statistics.h"

namespace zanvik {

// Whether the command selects the record: by number, time (both ends inclusive, a stop time of 0
// is none), conditions, level and text. `scratch` is used for texts.
bool match_evt_record(const ReportCommand& command, const evt_record& record, std::string& scratch);

class evt_selector : public evt_sink {
 public:
  // The commands and the container must outlive the selector. `statistics`, unless it is null,
  // counts every record.
  evt_selector(command_refs commands, record_container& records,
               LogStatistics* statistics = nullptr);

  void on_record(const evt_record& record) override;

 private:
  command_refs commands_;
  record_container& records_;
  LogStatistics* statistics_;
  std::vector<std::unique_ptr<evt_record_keeper>> keepers_;  // one a command, when it is needed
  std::string scratch_;
};

}  // namespace zanvik
