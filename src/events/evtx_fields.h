// Look-ups in a decoded .evtx record, as conditions, searches and named columns use them.
//
// Names are compared without regard to case. A text is made only for the slots that a look-up
// names; the outputs are the caller's, so that their memory serves for many records.
#pragma once

#include <string>
#include <string_view>

#include "events/cell_text.h"
#include "evtx/record_fields.h"

namespace zanvik {

// The value of the first slot of that name, else of the field of that name; `value` is cleared
// first. `clean` puts it on one line (see `cell_form::pulled`). Returns false when there is none.
bool find_field(const record_fields& record, std::string_view name, std::string& value, bool clean);

// Appends the slot's text as a column has it: its value, or what stands in its place, on one line.
void append_column_text(std::string& out, const record_fields& record, std::size_t slot,
                        cell_form form);

}  // namespace zanvik
