// The text shown for the path of a log that `-alias` or `-aliaspath` replaces.
#pragma once

#include <string>
#include <string_view>

#include "options/output_format.h"

namespace zanvik {

// The text to show for `path`: the alias of the whole path; else that of the first folder alias (in
// order of its keys) found anywhere in it, followed by the rest of the path; else the path itself.
// Keys are lower-cased, and compared without regard to ASCII case.
std::string apply_alias(const output_format& format, std::string_view path);

}  // namespace zanvik
