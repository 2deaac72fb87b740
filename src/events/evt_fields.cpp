#include "events/evt_fields.h"

#include <algorithm>
#include <cstdint>

#include "base/digits.h"
#include "base/number_text.h"
#include "base/text.h"

namespace zanvik {
namespace {

bool text_contains(evt_text text, std::string_view needle, std::string& scratch) {
  scratch.clear();
  append_evt_text(scratch, text);
  return contains_nocase(scratch, needle);
}

}  // namespace

bool evt_field_value(const evt_record& record, std::string_view name, std::string& value) {
  value.assign(name);
  to_lower_in_place(value);
  if (value == "source_name") {
    value.clear();
    append_evt_text(value, record.source_name);
  } else if (value == "user_sid") {
    sid_to_text(value, record.sid);
  } else if (value == "success_type") {
    value.clear();
    append_decimal(value, record.event_type);
  } else if (value == "string") {
    // Nothing between them: a condition may match across the border of two strings, which is meant.
    value.clear();
    for (const evt_text string : record.strings) append_evt_text(value, string);
  } else {
    const std::uint32_t number = unsigned_from_text(value).value_or(0);
    value.clear();
    if (number != 0 && number <= record.strings.size()) {
      append_evt_text(value, record.strings[number - 1]);
    }
  }
  return !value.empty();
}

bool evt_term_matches(const evt_record& record, std::string_view term, std::string& value) {
  const auto bar = term.find('|');
  if (!evt_field_value(record, term.substr(0, bar), value)) return false;
  return bar == std::string_view::npos || contains_nocase(value, term.substr(bar + 1));
}

bool evt_record_contains(const evt_record& record, std::string_view text, std::string& scratch) {
  sid_to_text(scratch, record.sid);
  // The second test has its arguments the other way round, and every text contains an empty SID, so
  // a search passes all records without a SID. Meant: reports rely on it.
  if (contains_nocase(scratch, text) || contains_nocase(text, scratch)) return true;
  if (text_contains(record.source_name, text, scratch)) return true;
  if (text_contains(record.computer_name, text, scratch)) return true;
  return std::any_of(record.strings.begin(), record.strings.end(),
                     [&](evt_text string) { return text_contains(string, text, scratch); });
}

}  // namespace zanvik
