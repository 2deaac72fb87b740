// The shared options that choose the look of results. Each function takes its options out of the
// list, in the order that decides their conflicts.
#pragma once

#include "options/argument_list.h"
#include "options/output_format.h"

namespace zanvik {

// `-csv`, `-csvgen`, `-csvl2t`, `-bodyfile`, `-xml`, `-multiline`: a later one of this list
// overrides the earlier ones, wherever they are on the command line.
void take_form_options(argument_list& argv_list, output_format& out);

// `-alias` and `-aliaspath`, lists of pairs of a true path and the shown one. Returns false after a
// message if one has an odd number of items.
[[nodiscard]] bool take_alias_options(argument_list& argv_list, output_format& out);

// Number base, separator, quoting, blanks, date and time format. A format of wrong length gives a
// message, and the default is used.
void take_text_options(argument_list& argv_list, output_format& out);

}  // namespace zanvik
