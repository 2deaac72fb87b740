#include "reports/evtx_selector.h"

#include <algorithm>

#include "reports/evtx_fields.h"

namespace zanvik {

evtx_selector::evtx_selector(const std::vector<ReportCommand>& commands, record_container& records)
    : commands_(commands) {
  keepers_.reserve(commands.size());
  for (const ReportCommand& command : commands) keepers_.emplace_back(command, records);
}

void evtx_selector::on_record(record_fields& record) {
  for (std::size_t i = 0; i < commands_.size(); ++i) {
    if (!match_record(commands_[i], record)) continue;
    if (commands_[i].emit) keepers_[i].keep(record);
    return;  // the first command that selects a record is the only one that sees it
  }
}

// The tests in their order, the cheap ones first: nothing is rendered for a record that fails by
// its number or its time.
bool evtx_selector::match_record(const ReportCommand& command, const record_fields& record) {
  if (command.event_id != any_event_id && command.event_id != record.event_id) return false;
  if (record.time < command.start_time) return false;
  if (command.stop_time != 0 && record.time > command.stop_time) return false;
  const auto holds = [&](const std::string& term) {
    return field_term_matches(record, term, scratch_, false);
  };
  if (!std::all_of(command.conditions.begin(), command.conditions.end(), holds)) return false;
  if (!command.level_condition.empty() && !holds(command.level_condition)) return false;
  return command.string_exists.empty() || field_contains(record, command.string_exists, scratch_);
}

}  // namespace zanvik
