// The options of the shared pass that choose the look of results. Each function takes its options
// out of the list, in the order that decides their conflicts.
#pragma once

#include "options/argument_list.h"
#include "options/output_format.h"

namespace zanvik {

// `-csv`, `-csvgen`, `-csvl2t`, `-bodyfile`, `-xml`, `-multiline`: a later one of this row
// overrides the earlier ones, wherever they stand in the list.
void take_form_options(argument_list& argv_list, output_format& out);

// `-alias` and `-aliaspath`, lists of pairs of a true path and what is shown for it. Returns false
// after a message when one holds an odd count of items.
[[nodiscard]] bool take_alias_options(argument_list& argv_list, output_format& out);

// Number base, separator, quoting, blanks, date and time format. A format of unfit length is
// answered with a message, and the default stays.
void take_text_options(argument_list& argv_list, output_format& out);

}  // namespace zanvik
