// From the blocks of one log to the records that its commands select: the reader, the selectors,
// the counters and the keepers of one thread.
#pragma once

#include <cstdint>
#include <span>

#include "commands/report_command.h"
#include "keep/keeping_sink.h"
#include "run/log_run.h"
#include "select/evt_selector.h"
#include "select/evtx_selector.h"
#include "stats/counting_sinks.h"

namespace zanvik {

class log_reading {
 public:
  // Records go to those of `run`, which is the whole run or the part of a thread, counts to its
  // statistics. All of this must outlive it; `progress` may be null.
  log_reading(const command_refs& commands, log_run& run, const log_source& log,
              walk_progress* progress);

  // Reads a block, which it may change.
  walk_result read(std::span<std::byte> block, std::uint64_t offset);

 private:
  // Where selected records go: statistics count them on their way.
  selection_sink& selection() {
    return run_.counts ? combinations_ : static_cast<selection_sink&>(keeping_);
  }

  log_run& run_;
  keeping_sink keeping_;
  combination_counter combinations_;
  evtx_selector selector_;
  evt_selector evt_selector_;
  record_counter counter_;
  walk_settings settings_;
};

}  // namespace zanvik
