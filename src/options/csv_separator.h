// How the text between fields is chosen, and the characters that follow from it.
#pragma once

#include <string>

#include "options/output_format.h"

namespace zanvik {

// Makes `value` the separator. Unless fields are quoted, also chooses the character that may not
// stand in a field and the one that replaces it: for a `|` it is `;`, for a `,` it is `;` with
// `comma_to_semicolon` and a blank without. "tab" and the two characters "\t" stand for a tab.
void set_csv_separator(output_format& format, std::string value, bool comma_to_semicolon);

}  // namespace zanvik
