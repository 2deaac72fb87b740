// The arguments of a run as a plain list, and how options are found in it.
//
// Options are not read from left to right: whoever knows an option looks it up by name and removes
// it, so the order of the words does not matter and unknown words are ignored. Names are compared
// whole and without regard to ASCII case; there are no abbreviations and no `=` form. The lines of
// report commands are read with the same functions.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace zanvik {

// Element 0 is the program's path.
using argument_list = std::vector<std::string>;

[[nodiscard]] bool option_equal(std::string_view a, std::string_view b);

// Removes the first element equal to `name` and the one after it from the list; `out_value` is the
// latter. Returns false, with nothing changed, if there is no such element or nothing follows the
// first one: an option in the last place counts as absent.
[[nodiscard]] bool take_value_option(std::string_view name, std::string& out_value,
                                     argument_list& argv_list);

// True if the list contains `name`; the first one is removed unless `keep` is set.
bool take_flag_option(std::string_view name, argument_list& argv_list, bool keep = false);

// True if `name` is at `first_index` or later. Removes nothing.
[[nodiscard]] bool has_option_from(std::string_view name, const argument_list& argv_list,
                                   std::size_t first_index);

// The arguments joined by one blank; one that contains a blank is wrapped in `quote`.
std::string command_line_text(const argument_list& argv_list, char quote);

}  // namespace zanvik
