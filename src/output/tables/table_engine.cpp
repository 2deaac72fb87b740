#include "output/tables/table_engine.h"

#include <algorithm>
#include <charconv>

#include "base/text.h"
#include "output/cell_text.h"
#include "output/time_cells.h"

namespace zanvik {
namespace {

constexpr std::uint16_t last_kind = 31;

std::size_t shown_width(const table_column& column, const output_format& format) {
  return format.no_whitespace ? 0 : static_cast<std::uint32_t>(column.width);
}

bool holds(const table_row& row, std::size_t index, std::uint16_t kind) {
  return row.valid && index < row.cells.size() && kind <= last_kind;
}

std::string number_text(const table_cell& cell, bool base16) {
  char digits[20];
  const bool hex = base16 && !(cell.flags & cell_decimal);
  const char* end = std::to_chars(digits, digits + sizeof digits, cell.number, hex ? 16 : 10).ptr;
  const auto count = static_cast<std::size_t>(end - digits);
  if (!hex) return {digits, count};
  const std::size_t places = cell.kind == cell_number16 ? 4 : 8;
  return "0x" + std::string(count < places ? places - count : 0, '0') + std::string(digits, count);
}

void append_number(std::string& line, const table_cell& cell, std::size_t width, bool base16) {
  const std::string text = number_text(cell, base16);
  if (text.size() < width) line.append(width - text.size(), ' ');
  line += text;
}

void append_text(std::string& line, const table_cell& cell, std::size_t width,
                 const output_format& format) {
  std::string text = cell.text;
  const text_rules rules(format);
  if (rules.separator_char != 0) {
    std::replace(text.begin(), text.end(), rules.separator_char, rules.separator_substitute);
  }
  const std::size_t begin = line.size();
  line += mark_line_ends(text);
  pad_from(line, begin, width);
}

// The date and its padding; in both forms the width is used up by the date alone.
void append_date(std::string& line, std::string_view date, std::size_t width) {
  const std::size_t begin = line.size();
  line += date;
  pad_from(line, begin, width);
}

}  // namespace

void table_row::clear() {
  for (table_cell& cell : cells) cell = table_cell();
}

void add_column(std::vector<table_column>& columns, std::string_view name, std::uint64_t width,
                std::uint16_t kind, std::uint32_t flags) {
  columns.push_back({kind, flags, width, std::string(name)});
}

std::string table_header(const std::vector<table_column>& columns, const output_format& format) {
  std::string line;
  for (std::size_t i = 0; i < columns.size(); ++i) {
    const table_column& column = columns[i];
    const std::size_t width = shown_width(column, format);
    if (i != 0) line += format.csv_separator;
    const bool is_time = column.kind == cell_date_time_pair || column.kind == cell_time_alone ||
                         column.kind == cell_time_column;
    if (is_time && format.pad_fields) line += ' ';
    const std::size_t begin = line.size();
    if ((column.flags & column_centred) && width > column.name.size()) {
      line.append((width - column.name.size()) / 2, ' ');
    }
    line += column.name;
    pad_from(line, begin, width);
  }
  line += '\n';
  return line;
}

void write_table_header(std::ostream& out, const std::vector<table_column>& columns,
                        output_format& format) {
  format.header_pending = false;
  const std::string line = table_header(columns, format);
  out.write(line.data(), static_cast<std::streamsize>(line.size()));
}

int set_number_cell(table_row& row, std::size_t index, std::uint64_t value, std::uint16_t kind,
                    std::uint32_t flags) {
  if (!holds(row, index, kind)) return 1;
  row.cells[index] = {kind, flags | row.flags, value, {}};
  if (kind != cell_date_and_time) return 1;
  if (index + 1 < row.cells.size()) row.cells[index + 1] = table_cell();
  return 2;
}

int set_text_cell(table_row& row, std::size_t index, std::string_view text, std::uint16_t kind,
                  std::uint32_t flags) {
  if (!holds(row, index, kind)) return 1;
  table_cell& cell = row.cells[index];
  cell = {kind, flags | row.flags, 0, std::string(text)};
  if ((cell.flags & row_quoted) && !is_braced_list(text)) cell.text = '"' + cell.text + '"';
  return 1;
}

void write_table_row(std::ostream& out, const table_row& row,
                     const std::vector<table_column>& columns, output_format& format) {
  if (format.header_pending) write_table_header(out, columns, format);
  std::string line;
  time_cells times(format);
  const std::size_t count = std::min(row.cells.size(), columns.size());
  for (std::size_t i = 0; i < count; ++i) {
    const table_cell& cell = row.cells[i];
    const std::size_t width = shown_width(columns[i], format);
    if (i != 0) line += format.csv_separator;
    switch (cell.kind) {
      case cell_number16:
      case cell_number64:
        append_number(line, cell, width, format.base16);
        break;
      case cell_text:
        append_text(line, cell, width, format);
        break;
      case cell_date_and_time:
        times.read(cell.number);
        append_date(line, times.date(), width);
        if (++i == count) break;
        line += format.csv_separator;
        if (format.pad_fields) line += ' ';
        append_date(line, times.time(), shown_width(columns[i], format));
        break;
      case cell_date_time_pair:
        times.read(cell.number);
        if (!format.no_whitespace && format.pad_fields) line += ' ';
        append_date(line, times.date(), width);
        line += ' ';
        line += times.time();
        break;
      default:  // an empty cell
        break;
    }
  }
  if (format.row_newline) line += '\n';
  out.write(line.data(), static_cast<std::streamsize>(line.size()));
}

}  // namespace zanvik
