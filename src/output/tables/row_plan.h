// How the fields of one shape are written into the rows of one table, computed once.
//
// A plan is text with gaps: separators, empty cells and literal values are in the text as they will
// be written, and each step adds a piece of it followed by the next value of a record's block.
// Columns that do not fit into a row, or that are dropped, are decided here too. Plans hold no
// views.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "events/log_record.h"
#include "output/cell_text.h"
#include "output/tables/table_layout.h"

namespace zanvik {

struct plan_step {
  std::uint32_t text_size = 0;  // of the text that goes before the value
  std::uint32_t width = 0;      // that the value is padded to
  bool skipped = false;         // the value is skipped
};

struct row_plan {
  // Readable bytes after the last text, so that a copy may run past its end.
  static constexpr std::size_t slack = 32;

  std::string text;  // of all steps, then `tail_size` bytes, then `slack`
  std::vector<plan_step> steps;
  std::size_t tail_size = 0;
  bool has_log_cell = false;  // the cell of the log's path still fits into the row
  std::size_t room = 0;       // bytes of the fields in a row, as long as no value is `long`

  bool made() const { return !text.empty(); }  // it has at least its slack
};

// The plans of the rows of one table, by shape, made when needed.
struct row_plans {
  shape_index shapes;
  std::vector<row_plan> plans;  // by the number of the shape; not made for all
  std::size_t bytes = 0;        // that they hold
};

// Values shorter than this are covered by a plan's `room`.
inline constexpr std::size_t long_value = 64;

// The plan for the records that have this record's shape and are anomalous, or not, like it.
row_plan make_row_plan(const table_layout& layout, const LogRecord& record, const text_rules& rules,
                       const std::string& separator);

}  // namespace zanvik
