// Lists out of one text: by a character, by the first of several, by blanks, as numbers, as bytes.
// Outputs are cleared first unless a function says otherwise.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace zanvik {

// Cuts `value` at every `separator` into `out`, which is cleared unless `append` is set. `trim`
// takes the blanks off each piece; an empty piece stays only with `keep_empty` (so a value that
// ends in the separator then ends in an empty piece). False for an empty value, else true.
bool split_on_char(std::string_view value, char separator, std::vector<std::string>& out, bool trim,
                   bool keep_empty, bool append);

// Cuts `value` at the first of `separators`, in their order and not in that of the value, that
// occurs in it at all: "a,b|c" with "|,;" gives "a,b" and "c". Returns that separator; 0 when none
// occurs (`out` is then the whole value as one piece, blanks and all) or when the value is empty.
char split_on_first_of(std::string_view value, std::vector<std::string>& out, bool trim,
                       bool keep_empty, std::string_view separators);

// The words of `text`, at most `limit` of them (0: all). With `honour_quotes`, and more than one
// word, the words from one that begins with `"` to one that ends with `"` become one item, joined
// by single blanks and without the quotes; a quote that stays open takes the rest. A word that is
// one lone quote opens. Returns the count of items.
std::size_t split_on_blanks(std::string_view text, std::size_t limit, std::vector<std::string>& out,
                            bool honour_quotes);

// The numbers of a list, each read by number_from_text; items that do not read are left out.
// The separator may be a blank. False when the list comes out empty.
bool parse_number_list(std::string_view value, std::vector<std::int64_t>& out, char separator);

// The bytes of a list: with `as_hex` each item as hexadecimal digits (0 when there are none), else
// by unsigned_from_text, where items that do not read are left out. Only the low 8 bits of an item
// count. Returns the count of bytes.
std::size_t parse_hex_bytes(std::vector<std::uint8_t>& out, std::string_view value, char separator,
                            bool as_hex);

}  // namespace zanvik
