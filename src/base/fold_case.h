// Text without case, for texts that rules and conditions compare in any case.
//
// Folds A to Z and the letters of the Latin, Greek, Cyrillic, Armenian and full-width alphabets
// that have their own single lower-case form, code point by code point. Text is UTF-8; other bytes
// are copied unchanged. Nothing here depends on a locale.
#pragma once

#include <string>
#include <string_view>

namespace zanvik {

// The lower-case form of one code point, or itself.
char32_t fold_code_point(char32_t c);

// Appends `text` folded to `out`; at most as many bytes.
void append_folded(std::string& out, std::string_view text);
std::string folded(std::string_view text);

// Reads the code point at `position` and moves past it; a byte that does not begin one is read
// alone, with `valid` false. `position` must be inside `text`.
struct code_point {
  char32_t value = 0;
  bool valid = true;
};
code_point next_code_point(std::string_view text, std::size_t& position);
// The position of the code point that ends before `position`, which must be above 0.
std::size_t previous_code_point(std::string_view text, std::size_t position);

}  // namespace zanvik
