// The sink that compares each legacy .evt record with the commands of a log, in order, and passes
// it on with the first that selects it.
#pragma once

#include <string>
#include <utility>

#include "commands/report_command.h"
#include "evt/evt.h"
#include "select/selection_sink.h"

namespace zanvik {

// Whether the command selects the record: by number, time (both ends inclusive; a stop time of 0
// means none), conditions, level and text. `scratch` is used for texts.
bool match_evt_record(const ReportCommand& command, const evt_record& record, std::string& scratch);

class evt_selector : public evt_sink {
 public:
  // The commands and the sink must outlive the selector.
  evt_selector(command_refs commands, selection_sink& sink)
      : commands_(std::move(commands)), sink_(sink) {}

  void on_record(const evt_record& record) override;

 private:
  command_refs commands_;
  selection_sink& sink_;
  std::string scratch_;
};

}  // namespace zanvik
