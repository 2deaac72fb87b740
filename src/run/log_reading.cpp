#include "run/log_reading.h"

#include "evt/evt.h"
#include "evtx/evtx.h"

namespace zanvik {
namespace {

// The size of a legacy log is 32 bits: one of just 4 GiB has the size 0 and yields nothing. Meant.
constexpr std::uint64_t evt_bytes_end = std::uint64_t{1} << 32;

}  // namespace

log_reading::log_reading(const command_refs& commands, log_run& run, const log_source& log,
                         walk_progress* progress)
    : run_(run),
      keeping_(commands, run.records, run.plans),
      combinations_(run.statistics, commands, run.records, keeping_),
      selector_(commands, selection()),
      evt_selector_(commands, selection()),
      counter_(run.statistics, log.channel, selector_, evt_selector_),
      settings_{run.options.inc_slack, progress, run.options.reading} {}

walk_result log_reading::read(std::span<std::byte> block, std::uint64_t offset) {
  run_.records.start_block(block.size());
  record_sink& sink = run_.counts ? counter_ : static_cast<record_sink&>(selector_);
  const walk_result result = walk_evtx_block(block, offset, run_.reader, sink, settings_);
  if (result == walk_result::not_evtx && block.size() < evt_bytes_end) {
    walk_evt_log(block, run_.counts ? counter_ : static_cast<evt_sink&>(evt_selector_));
  }
  return result;
}

}  // namespace zanvik
