#include "select/evt_selector.h"

#include <algorithm>
#include <utility>

#include "events/evt_fields.h"

namespace zanvik {

bool match_evt_record(const ReportCommand& command, const evt_record& record,
                      std::string& scratch) {
  if (command.event_id != any_event_id && command.event_id != record.short_event_id()) return false;
  if (record.time < command.start_time) return false;
  if (command.stop_time != 0 && record.time > command.stop_time) return false;
  const auto holds = [&](const std::string& term) {
    return evt_term_matches(record, term, scratch);
  };
  if (!std::all_of(command.conditions.begin(), command.conditions.end(), holds)) return false;
  if (!command.level_condition.empty() && !holds(command.level_condition)) return false;
  return command.string_exists.empty() ||
         evt_record_contains(record, command.string_exists, scratch);
}

evt_selector::evt_selector(command_refs commands, record_container& records,
                           LogStatistics* statistics)
    : commands_(std::move(commands)),
      records_(records),
      statistics_(statistics),
      keepers_(commands_.size()) {}

void evt_selector::on_record(const evt_record& record) {
  if (statistics_) count_record(*statistics_, record.short_event_id(), record.time);
  for (std::size_t i = 0; i < commands_.size(); ++i) {
    if (!match_evt_record(commands_[i], record, scratch_)) continue;
    if (commands_[i].emit) {
      auto& keeper = keepers_[i];
      if (!keeper) keeper = std::make_unique<evt_record_keeper>(commands_[i], records_);
      keeper->keep(record);
      if (statistics_) count_hist_from(*statistics_, commands_, i, records_.last());
    }
    return;  // the first command that selects a record is the only one that sees it
  }
}

}  // namespace zanvik
