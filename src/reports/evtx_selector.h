// The sink that tries each decoded .evtx record against the commands of a log, in their order, and
// keeps it for the first that selects it.
#pragma once

#include <string>
#include <vector>

#include "evtx/evtx.h"
#include "reports/record_keeper.h"

namespace zanvik {

class evtx_selector : public record_sink {
 public:
  // The commands and the container must outlive the selector.
  evtx_selector(const std::vector<ReportCommand>& commands, record_container& records);

  void on_record(record_fields& record) override;

 private:
  bool match_record(const ReportCommand& command, const record_fields& record);

  const std::vector<ReportCommand>& commands_;
  std::vector<record_keeper> keepers_;  // one a command
  std::string scratch_;
};

}  // namespace zanvik
