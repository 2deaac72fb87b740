// One table of records: header and rows, padded for reading or as CSV.
//
// The columns are those of all its records (table_layout.h), so a table takes two passes. Records
// outside their chunk's range are left out without `-inc_slack`, although they count for the
// columns; a table without rows still has its header.
#pragma once

#include <ostream>
#include <span>

#include "events/log_record.h"
#include "options/output_format.h"
#include "output/row_buffer.h"
#include "output/tables/table_cache.h"
#include "output/time_cells.h"
#include "output/write_context.h"

namespace zanvik {

// Writes a table of `records`, in their order; nothing if there are none or `output_csv` is off.
// The rows may stay in `out` until it is flushed.
void write_event_table(row_buffer& out, time_cells& times, table_cache& tables,
                       std::span<const LogRecord* const> records, const output_format& format,
                       const write_context& context);

// Writes rows of `records`, which are some of a table with this layout. `plans` are of the layout.
void write_table_rows(row_buffer& out, time_cells& times, const table_layout& layout,
                      row_plans& plans, std::span<const LogRecord* const> records,
                      const output_format& format, const write_context& context);

}  // namespace zanvik
