#include "output/tables/table_columns.h"

#include "output/cell_text.h"

namespace zanvik {

std::string table_header(const std::vector<table_column>& columns, const output_format& format) {
  std::string line;
  for (std::size_t i = 0; i < columns.size(); ++i) {
    const table_column& column = columns[i];
    const std::size_t width = format.no_whitespace ? 0 : column.width;
    if (i != 0) line += format.csv_separator;
    if (column.is_time && format.pad_fields) line += ' ';
    const std::size_t begin = line.size();
    if (column.centred && width > column.name.size()) {
      line.append((width - column.name.size()) / 2, ' ');
    }
    line += column.name;
    pad_from(line, begin, width);
  }
  line += '\n';
  return line;
}

}  // namespace zanvik
