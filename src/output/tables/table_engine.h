// The plain table engine: columns with widths, a row of typed cells, one line written at a time.
//
// It says what a table looks like; the fast writer of event rows (row_writer.h) shares its columns
// and header and is held against its rows. Cells that do not fit are dropped silently; a number
// that is no time gives blanks.
#pragma once

#include <cstddef>
#include <cstdint>
#include <ostream>
#include <string>
#include <string_view>
#include <vector>

#include "options/output_format.h"

namespace zanvik {

enum cell_kind : std::uint16_t {
  cell_plain = 0,            // header column; an empty cell
  cell_number16 = 2,         // right-aligned number
  cell_number64 = 8,         // right-aligned number
  cell_text = 11,            // left-aligned text
  cell_date_and_time = 12,   // FILETIME over two columns
  cell_date_time_pair = 13,  // FILETIME in one column
  cell_time_alone = 18,      // header of a time; no table of this program has one
  cell_time_column = 24,     // header of the time behind a date column
};

inline constexpr std::uint32_t column_centred = 0x02000000;  // header name in the middle
inline constexpr std::uint32_t cell_decimal = 0x40000000;    // whatever `base16` says
inline constexpr std::uint32_t row_quoted = 0x00008000;      // texts stand in double quotes

struct table_column {
  std::uint16_t kind = cell_plain;
  std::uint32_t flags = 0;
  std::uint64_t width = 0;  // in bytes
  std::string name;
};

struct table_cell {
  std::uint16_t kind = cell_plain;
  std::uint32_t flags = 0;
  std::uint64_t number = 0;
  std::string text;
};

// The cells of one line. Made once a table; `clear` empties the cells between records.
struct table_row {
  bool valid = false;
  std::uint32_t flags = 0;  // go to every cell that is stored
  std::vector<table_cell> cells;

  table_row() = default;
  table_row(std::size_t columns, std::uint32_t row_flags)
      : valid(true), flags(row_flags), cells(columns) {}
  void clear();
};

void add_column(std::vector<table_column>& columns, std::string_view name, std::uint64_t width,
                std::uint16_t kind, std::uint32_t flags);

// The header line, its line end included.
std::string table_header(const std::vector<table_column>& columns, const output_format& format);

// Writes the header line and clears `header_pending`.
void write_table_header(std::ostream& out, const std::vector<table_column>& columns,
                        output_format& format);

// Store a cell and return how many columns it took. An index past the last cell, an invalid row or
// a kind above 31 stores nothing and still counts as one column.
int set_number_cell(table_row& row, std::size_t index, std::uint64_t value, std::uint16_t kind,
                    std::uint32_t flags);
int set_text_cell(table_row& row, std::size_t index, std::string_view text, std::uint16_t kind,
                  std::uint32_t flags);

// Writes one line, and the header before it if that is still pending.
void write_table_row(std::ostream& out, const table_row& row,
                     const std::vector<table_column>& columns, output_format& format);

}  // namespace zanvik
