// Texts as the database holds them: UTF-8 without NULs. Programs that read it take a NUL for the
// end of a text, so that one would hide what stands behind it.
#pragma once

#include <string>
#include <string_view>

namespace zanvik {

// Whether the text is sound UTF-8 without a NUL.
bool is_clean_text(std::string_view text);

// The text with U+FFFD for each NUL and each byte that is no UTF-8, in `scratch` or where it is.
std::string_view clean_text(std::string_view text, std::string& scratch);

}  // namespace zanvik
