// What is shown for the path of a log where `-alias` or `-aliaspath` replaces it.
#pragma once

#include <string>
#include <string_view>

#include "options/output_format.h"

namespace zanvik {

// The text to show for `path`: the alias of the whole path, else of the first folder alias (in
// order of its keys) that is found anywhere in it, followed by what stands behind; else the path
// as it is. Keys are lower-cased, and compared without regard to ASCII case.
std::string apply_alias(const output_format& format, std::string_view path);

}  // namespace zanvik
