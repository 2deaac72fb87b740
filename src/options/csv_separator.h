// Choosing the text between fields, and the characters that follow from it.
#pragma once

#include <string>

#include "options/output_format.h"

namespace zanvik {

// Makes `value` the separator. Unless fields are quoted, also chooses the character that must not
// be in a field and its replacement: for `|` it is `;`, for `,` it is `;` with `comma_to_semicolon`
// and a blank without. "tab" and the two characters "\t" mean a tab.
void set_csv_separator(output_format& format, std::string value, bool comma_to_semicolon);

}  // namespace zanvik
