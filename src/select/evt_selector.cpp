#include "select/evt_selector.h"

#include <algorithm>

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

void evt_selector::on_record(const evt_record& record) {
  for (std::size_t i = 0; i < commands_.size(); ++i) {
    if (match_evt_record(commands_[i], record, scratch_) && sink_.take(i, record)) return;
  }
}

}  // namespace zanvik
