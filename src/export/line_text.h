// Texts by themselves, in lines that are not made of events: a string of JSON, a cell of CSV.
//
// In: any bytes. Out: as the forms of events write texts (escaped_text.h); bytes that are not UTF-8
// become U+FFFD.
#pragma once

#include <string>
#include <string_view>

namespace zanvik {

// Appends the text in quotes.
void append_json_text(std::string& out, std::string_view text);

// Whether a spreadsheet would run the cell.
bool is_formula(std::string_view cell);

enum class cell_quotes : unsigned char { always, where_needed };
// Appends a cell; a formula gets a `'` in front, unless `raw`.
void append_csv_cell(std::string& out, std::string_view text, cell_quotes quotes, bool raw = false);

}  // namespace zanvik
