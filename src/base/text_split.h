// Lists from one text: by a character, by the first of several, by blanks, as numbers, as bytes.
// Outputs are cleared first unless a function says otherwise.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace zanvik {

// Splits `value` at every `separator` into `out`, which is cleared unless `append` is set. `trim`
// removes the blanks around each piece; an empty piece is kept only with `keep_empty` (a value that
// ends in the separator then ends in an empty piece). False for an empty value, else true.
bool split_on_char(std::string_view value, char separator, std::vector<std::string>& out, bool trim,
                   bool keep_empty, bool append);

// Splits `value` at the first of `separators`, in their order and not in that of the value, that
// occurs in it: "a,b|c" with "|,;" gives "a,b" and "c". Returns that separator; 0 if none occurs
// (`out` is then the whole value as one piece, with its blanks) or if the value is empty.
char split_on_first_of(std::string_view value, std::vector<std::string>& out, bool trim,
                       bool keep_empty, std::string_view separators);

// The words of `text`, at most `limit` of them (0: all). With `honour_quotes`, and more than one
// word, the words from one that begins with `"` to one that ends with `"` become one item, joined
// by single blanks and without the quotes; a quote that is not closed takes the rest. A word that
// is a single quote opens. Returns the number of items.
std::size_t split_on_blanks(std::string_view text, std::size_t limit, std::vector<std::string>& out,
                            bool honour_quotes);

// The numbers of a list, each read by number_from_text; items that cannot be read are left out. The
// separator may be a blank. False if the list is empty.
bool parse_number_list(std::string_view value, std::vector<std::int64_t>& out, char separator);

// The bytes of a list: with `as_hex` each item as hexadecimal digits (0 if there are none), else by
// unsigned_from_text, where items that cannot be read are left out. Only the low 8 bits of an item
// count. Returns the number of bytes.
std::size_t parse_hex_bytes(std::vector<std::uint8_t>& out, std::string_view value, char separator,
                            bool as_hex);

}  // namespace zanvik
