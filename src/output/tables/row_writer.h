// Writes the rows of one table of records, the fast way: what depends only on the shape of a record
// is in its plan (row_plan.h), what rarely changes is kept as text, and the values are copied from
// the record's block. Tests compare it with the plain way.
//
// It refers to everything it is made from, which must outlive it; nothing is allocated per record.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "events/log_record.h"
#include "options/output_format.h"
#include "output/cell_text.h"
#include "output/row_buffer.h"
#include "output/tables/row_plan.h"
#include "output/tables/table_layout.h"
#include "output/time_cells.h"
#include "output/write_context.h"

namespace zanvik {

class row_writer {
 public:
  row_writer(row_buffer& out, time_cells& times, const table_layout& layout, row_plans& plans,
             const output_format& format, const write_context& context);

  // Appends the record's line. The record is one of those that the table was planned for.
  void write(const LogRecord& record);

 private:
  // A table has few plans; if a crafted log makes them many, they are made again as needed.
  static constexpr std::size_t most_plan_bytes = std::size_t{16} << 20;

  const row_plan& plan_of(const LogRecord& record);
  void renew_caption(const LogRecord& record);

  char* put_time(char* at, std::uint64_t filetime);
  char* put_marks(char* at, const LogRecord& record);
  template <bool padded, bool quoted>
  char* put_fields(char* at, const row_plan& plan, const char* values);
  char* put_long_cell(char* at, value_cell cell, std::size_t width);
  char* put_separator(char* at) const;

  row_buffer& out_;
  time_cells& times_;
  const table_layout& layout_;
  row_plans& plans_;
  const output_format& format_;
  const write_context& context_;
  text_rules rules_;
  std::size_t number_width_;
  std::size_t date_width_;
  std::size_t time_width_ = 0;
  bool look_at_all_ = false;    // values without a mark may contain the separator too
  std::size_t fixed_room_ = 0;  // of the cells before the level's

  // The ends of a row, which rarely change from one to the next, and what they were made for.
  std::string caption_;  // from the level's cell up to the first field
  const std::string* description_ = nullptr;
  const std::string* provider_ = nullptr;
  std::uint32_t level_ = 0;
  bool is_evtx_ = false;
  std::string log_cell_;  // the last one

  std::size_t row_room_ = 0;  // the size of the current row without its long values

  std::string scratch_;
};

}  // namespace zanvik
