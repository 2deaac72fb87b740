// Look-ups in a decoded .evtx record, as conditions, searches and named columns use them.
//
// Names are compared without regard to case. A text is made only for the slots that a look-up
// names; the outputs are the caller's, so that their memory serves for many records.
#pragma once

#include <string>
#include <string_view>

#include "evtx/record_fields.h"

namespace zanvik {

// The value of the first slot of that name, else of the field of that name; `value` is cleared
// first. `clean` puts it on one line (see `value_form::pulled`). Returns false when there is none.
bool find_field(const record_fields& record, std::string_view name, std::string& value, bool clean,
                bool slots_only = false);

// Appends the slot's text as a column has it: its value, or what stands in its place, on one line.
void append_column_text(std::string& out, const record_fields& record, std::size_t slot,
                        value_form form);

// A term "name|pattern" holds when the field's value contains the pattern, in any case; a term
// without "|" when there is such a field. `value` receives what was looked at.
bool field_term_matches(const record_fields& record, std::string_view term, std::string& value,
                        bool clean);

// Whether a slot's name, a slot's text or a field's value contains `text`, in any case. `scratch`
// is used for texts.
bool field_contains(const record_fields& record, std::string_view text, std::string& scratch);

}  // namespace zanvik
