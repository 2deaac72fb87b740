#include "output/tables/event_table.h"

#include "output/prefetch.h"
#include "output/tables/row_writer.h"

namespace zanvik {

void write_event_table(row_buffer& out, time_cells& times, table_cache& tables,
                       std::span<const LogRecord* const> records, const output_format& format,
                       const write_context& context) {
  if (records.empty() || !format.output_csv) return;
  table_plan& table = tables.plan_for(records, format, context);
  out.append(table.header);
  write_table_rows(out, times, table.layout, table.rows, records, format, context);
}

void write_table_rows(row_buffer& out, time_cells& times, const table_layout& layout,
                      row_plans& plans, std::span<const LogRecord* const> records,
                      const output_format& format, const write_context& context) {
  row_writer rows(out, times, layout, plans, format, context);
  const std::size_t count = records.size();
  for (std::size_t i = 0; i < count; ++i) {
    if (i + records_ahead < count) prefetch_bytes(records[i + records_ahead], sizeof(LogRecord));
    if (i + values_ahead < count) {
      prefetch_bytes(records[i + values_ahead]->values, value_bytes_ahead);
    }
    if ((records[i]->flags & record_outside_range) && !context.inc_slack) continue;
    rows.write(*records[i]);
  }
}

}  // namespace zanvik
