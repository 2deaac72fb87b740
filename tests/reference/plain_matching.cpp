#include "reference/plain_matching.h"

#include <algorithm>

#include "base/text.h"
#include "events/evtx_fields.h"

namespace zanvik {

bool field_term_matches(const record_fields& record, std::string_view term, std::string& value) {
  const auto bar = term.find('|');
  if (!find_field(record, term.substr(0, bar), value, false)) return false;
  return bar == std::string_view::npos || contains_nocase(value, term.substr(bar + 1));
}

bool field_contains(const record_fields& record, std::string_view text, std::string& scratch) {
  for (std::size_t slot = 0; slot < record.slots.size(); ++slot) {
    if (contains_nocase(record.slot_name(slot), text)) return true;
    scratch.clear();
    append_slot_text(scratch, record, slot);
    if (contains_nocase(scratch, text)) return true;
  }
  for (const layout_field& field : record.layout->fields) {
    if (contains_nocase(field.text, text)) return true;
  }
  return false;
}

bool match_record_plainly(const ReportCommand& command, const record_fields& record,
                          std::string& scratch) {
  if (command.event_id != any_event_id && command.event_id != record.event_id) return false;
  if (record.time < command.start_time) return false;
  if (command.stop_time != 0 && record.time > command.stop_time) return false;
  const auto holds = [&](const std::string& term) {
    return field_term_matches(record, term, scratch);
  };
  if (!std::all_of(command.conditions.begin(), command.conditions.end(), holds)) return false;
  if (!command.level_condition.empty() && !holds(command.level_condition)) return false;
  return command.string_exists.empty() || field_contains(record, command.string_exists, scratch);
}

}  // namespace zanvik
