#include "options/csv_separator.h"

#include <utility>

#include "base/text.h"

namespace zanvik {

void set_csv_separator(output_format& format, std::string value, bool comma_to_semicolon) {
  format.csv_separator = std::move(value);
  if (format.quoted_fields) return;
  const std::string lower = to_lower(format.csv_separator);
  format.separator_char = 0;
  format.separator_substitute = 0;
  if (lower.find('|') != std::string::npos) {
    format.separator_char = '|';
    format.separator_substitute = ';';
  } else if (lower.find(',') != std::string::npos) {
    format.separator_char = ',';
    format.separator_substitute = comma_to_semicolon ? ';' : ' ';
  } else if (lower == "tab" || lower == "\\t") {
    format.csv_separator = "\t";
  }
}

}  // namespace zanvik
