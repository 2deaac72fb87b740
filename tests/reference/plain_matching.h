// Which records a command selects, by the rule itself: tests compare select/evtx_selector.h with
// it.
#pragma once

#include <string>
#include <string_view>

#include "commands/report_command.h"
#include "evtx/record_fields.h"

namespace zanvik {

// A term "name|pattern" is true if the field's value contains the pattern, in any case; a term
// without "|" if there is such a field. `value` receives the value that was tested.
bool field_term_matches(const record_fields& record, std::string_view term, std::string& value);

// Whether a slot's name, a slot's text or a field's value contains `text`, in any case. `scratch`
// is used for texts.
bool field_contains(const record_fields& record, std::string_view text, std::string& scratch);

// Whether the command selects the record, except for its pull list.
bool match_record_plainly(const ReportCommand& command, const record_fields& record,
                          std::string& scratch);

}  // namespace zanvik
