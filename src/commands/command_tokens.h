// What literal command lines and command files have in common: splitting at commas, and cleaning
// tokens.
#pragma once

#include <string_view>

#include "base/text.h"

namespace zanvik {

// Calls `use` with each piece of `text` between commas that is not empty, unchanged.
template <typename F>
void for_each_piece(std::string_view text, F&& use) {
  for (;;) {
    const auto comma = text.find(',');
    if (comma != 0 && !text.empty()) use(text.substr(0, comma));
    if (comma == std::string_view::npos) return;
    text.remove_prefix(comma + 1);
  }
}

// The token without the blanks around it; empty if nothing else is there.
inline std::string_view clean_token(std::string_view piece) { return trimmed(piece); }

}  // namespace zanvik
