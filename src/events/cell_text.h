// Values as the cells of listings and conditions on named columns have them: on one line, and
// marked when a table has to look at them once more.
#pragma once

#include <string>
#include <string_view>

#include "evtx/values/value_text.h"

namespace zanvik {

enum class cell_form {
  all_data,  // in a listing of everything: line feeds become ":", one leading ":" goes
  pulled,    // as a named column: line feeds become ","
};

// Cleans the text [begin, end) in place and returns its new end. `marked` is set when the text
// holds a comma or a vertical bar, else left alone.
char* clean_cell_text(char* begin, char* end, cell_form form, bool& marked);
void clean_cell_text(std::string& text, cell_form form);

// Whether the text [begin, end) is a single comma, which a line break becomes: such a cell is stored
// empty.
inline bool is_lone_comma(const char* begin, const char* end) {
  return end - begin == 1 && *begin == ',';
}
inline std::string_view without_lone_comma(std::string_view text) {
  return is_lone_comma(text.data(), text.data() + text.size()) ? std::string_view() : text;
}

// What `write_cell_text` does, for any value.
char* write_any_cell_text(value_writer& writer, char* out, const raw_value& value, cell_form form,
                          bool& marked);

// Writes the value to `out`, which has room for `value_text_bound` bytes, and returns its end.
// `marked` as above; it may be set without need.
inline char* write_cell_text(value_writer& writer, char* out, const raw_value& value,
                             cell_form form, bool& marked) {
  if (char* const end = value_writer::write_small_number(out, value)) return end;
  return write_any_cell_text(writer, out, value, form, marked);
}

}  // namespace zanvik
