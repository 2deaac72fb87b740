// Look-ups in a legacy .evt record, for conditions and searches. Texts are made only for what a
// look-up names; the outputs belong to the caller, so that their memory is reused for many records.
#pragma once

#include <string>
#include <string_view>

#include "evt/evt_record.h"

namespace zanvik {

// Sets `value` to "source_name", "user_sid" (as text), "success_type" (the event type), "string"
// (all strings concatenated) or, for any other name, the string of that number, from 1; in any
// case. Returns false if the value is empty.
bool evt_field_value(const evt_record& record, std::string_view name, std::string& value);

// A term "name|pattern" is true if the field's value is not empty and contains the pattern, in any
// case; a term without "|" if the value is not empty. `value` receives the value that was tested.
bool evt_term_matches(const evt_record& record, std::string_view term, std::string& value);

// Whether the record's SID, source, computer or one of its strings contains `text`, in any case, or
// `text` contains the SID; so every record without a SID passes. `scratch` is used for texts.
bool evt_record_contains(const evt_record& record, std::string_view text, std::string& scratch);

}  // namespace zanvik
