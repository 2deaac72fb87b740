// Case, blanks, replacing and searching in narrow text.
//
// Letters are folded byte by byte as in the classic locale: only A to Z have a lower case, so UTF-8
// beyond ASCII is not changed. A blank is one of " \t\r\n".
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace zanvik {

constexpr char lower_char(char c) {
  return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

// Folds `text` in place and returns it.
std::string& to_lower_in_place(std::string& text);
std::string to_lower(std::string_view text);

// `text` without its leading and trailing blanks, as a view into it.
std::string_view trimmed(std::string_view text);
// The same in place. False if nothing is left.
bool trim_blanks(std::string& text);

// Removes every `c` from `text`; returns how many there were.
std::size_t remove_char(std::string& text, char c);
// Removes the CRs and LFs at the end of `text`; returns how many there were.
std::size_t strip_line_ends(std::string& text);

// Replaces every `from` by `to`, with `any_case` both cases of `from`. Does nothing if the two are
// equal.
void replace_char(std::string& text, char from, char to, bool any_case);
// Replaces the first `what` by `by`; `any_case` finds it in any case and keeps the case of the rest
// of `text`. False, with `text` unchanged, if `what` is empty or not found.
bool replace_first(std::string& text, std::string_view what, std::string_view by, bool any_case);

// `text` on one row: CR LF becomes "[CRLF]", LF CR "[LFCR]", LF "[LF]". A lone CR becomes "[CR]"
// only in a text without any LF; otherwise it is kept. In "\n\r\n" the rest of the text is copied
// once more before the second mark; this is meant, and a limit keeps it in proportion.
std::string mark_line_ends(std::string_view text);

// A name as one line of printable text: control characters of one or two bytes become "\\x0a".
// Other bytes are not changed.
std::string printable_name(std::string_view name);
// Whether that is the name itself.
bool is_printable_name(std::string_view name);

// Whether the two are equal in any case.
bool equal_nocase(std::string_view a, std::string_view b);

// True if `needle` occurs in `haystack`, in any case; an empty needle occurs everywhere. Allocates
// nothing: it runs for every record.
bool contains_nocase(std::string_view haystack, std::string_view needle);

}  // namespace zanvik
