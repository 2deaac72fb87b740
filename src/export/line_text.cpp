#include "export/line_text.h"

#include "export/escaped_text.h"

namespace zanvik {

void append_json_text(std::string& out, std::string_view text) {
  bool lossy = false;
  out += '"';
  append_escaped(out, text, escape_form::json, lossy);
  out += '"';
}

bool is_formula(std::string_view cell) {
  return !cell.empty() && std::string_view("=+-@\t\r").find(cell.front()) != std::string_view::npos;
}

void append_csv_cell(std::string& out, std::string_view text, cell_quotes quotes, bool raw) {
  const bool quoted =
      quotes == cell_quotes::always || text.find_first_of(",\"\r\n") != std::string_view::npos;
  bool lossy = false;
  if (quoted) out += '"';
  if (!raw && is_formula(text)) out += '\'';
  append_escaped(out, text, escape_form::csv, lossy);
  if (quoted) out += '"';
}

}  // namespace zanvik
