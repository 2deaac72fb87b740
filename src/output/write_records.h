// The way into this folder, which turns selected records into results: a padded table or a CSV
// table for each event ID and provider, or one stream of timeline lines.
//
//   write_records     dispatch, called each time a set of selected records is complete
//   write_grouped     one table for each group, an empty line between them
//   event_table.h     one table: its columns (table_layout.h) and its rows (row_writer.h, by the
//                     plans of row_plan.h), which table_cache.h keeps for the next log
//   timeline_writer.h the timelines, by the plans of timeline_fields.h; their headers and inodes in
//                     timeline_text.h
//   cell_text.h       the texts of single cells; path_alias.h has a log's path, time_cells.h a time
//   grouping.h        which records make a table
//   threaded_rows.h   the same tables and timelines by several threads, on row_jobs.h
//   row_buffer.h      where rows are built; short_copy.h and prefetch.h make that fast
//   write_context.h   what writers need besides the records and the format
//
// No writer reports an error: a stream in a failed state drops what follows. Nothing is kept
// between calls except what is in `output_memory`.
#pragma once

#include <ostream>
#include <span>

#include "events/log_record.h"
#include "options/output_format.h"
#include "output/tables/table_cache.h"
#include "output/write_context.h"
#include "pipeline/ordered_work.h"

namespace zanvik {

// What the writers keep between the calls of a run. All its calls have the same format and context.
struct output_memory {
  table_cache tables;
  bool header_pending =
      true;  // of a timeline, which has one header in a run; no table leaves it on
};

// Writes the records of the container, by time within their groups, in the form that `format`
// selects; all bytes have reached `out` on return. An empty container writes nothing, not even a
// header. With `threads`, which have no other job, they make the rows; the same bytes.
void write_records(std::ostream& out, record_container& records, const output_format& format,
                   const write_context& context, output_memory& memory,
                   ordered_work* threads = nullptr);

// Writes one table for each group of equal event ID and provider, in order of ID and then of the
// provider's bytes. `records` are in time order and stay so within a group.
void write_grouped(std::ostream& out, std::span<const LogRecord* const> records,
                   const output_format& format, const write_context& context, table_cache& tables);

}  // namespace zanvik
