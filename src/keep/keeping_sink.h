// The sink that keeps what a log's commands select, for tables and timelines: a keeper for each
// command, made when needed.
#pragma once

#include <memory>
#include <vector>

#include "commands/report_command.h"
#include "events/log_record.h"
#include "keep/evt_record_keeper.h"
#include "keep/plan_cache.h"
#include "keep/record_keeper.h"
#include "select/selection_sink.h"

namespace zanvik {

class keeping_sink : public selection_sink {
 public:
  // The commands, the container and the plans must outlive the sink.
  keeping_sink(command_refs commands, record_container& records, plan_cache& plans);

  // A record of a command that emits nothing is accepted but not kept. One that has none of the
  // fields which its command pulls is not accepted.
  bool take(std::size_t command, record_fields& record) override;
  bool take(std::size_t command, const evt_record& record) override;

 private:
  command_refs commands_;
  record_container& records_;
  plan_cache& plans_;
  std::vector<std::unique_ptr<record_keeper>> keepers_;  // one for each command, made when needed
  std::vector<std::unique_ptr<evt_record_keeper>> evt_keepers_;
};

}  // namespace zanvik
