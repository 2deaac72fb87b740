#include "output/write_records.h"

#include "output/grouping.h"
#include "output/row_buffer.h"
#include "output/row_jobs.h"
#include "output/tables/event_table.h"
#include "output/threaded_rows.h"
#include "output/time_cells.h"
#include "output/timelines/timeline_writer.h"

namespace zanvik {
void write_records(std::ostream& out, record_container& records, const output_format& format,
                   const write_context& context, output_memory& memory, ordered_work* threads) {
  if (records.empty()) return;
  if (threads && records.size() > 2 * row_jobs::records_of_job) {
    write_records_threaded(out, records.in_time_order(), format, context, memory.header_pending,
                           *threads);
    return;
  }
  if (format.output_bodyfile || format.output_l2t) {
    write_timeline(out, records.in_time_order(), format, context, memory.header_pending);
  } else if (format.output_csv) {
    memory.tables.use_with(records);
    write_grouped(out, records.in_time_order(), format, context, memory.tables);
    memory.header_pending = false;
  }
}

void write_grouped(std::ostream& out, std::span<const LogRecord* const> records,
                   const output_format& format, const write_context& context, table_cache& tables) {
  if (records.empty()) return;
  const grouping groups(records);
  row_buffer buffer(out);
  time_cells times(format);
  for (std::size_t i = 0; i < groups.count(); ++i) {
    if (i != 0) buffer.append("\n");
    write_event_table(buffer, times, tables, groups.group(i), format, context);
  }
}

}  // namespace zanvik
