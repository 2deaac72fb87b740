#include "output/event_table.h"

#include "output/row_writer.h"
#include "output/table_engine.h"
#include "output/table_layout.h"

namespace zanvik {

void write_event_table(row_buffer& out, time_cells& times,
                       std::span<const LogRecord* const> records, output_format& format,
                       const write_context& context) {
  if (records.empty() || !format.output_csv) return;
  table_layout layout = lay_out_table(records, format, context);
  out.append(table_header(layout.columns, format));
  format.header_pending = false;
  row_writer rows(out, times, layout, format, context);
  for (const LogRecord* record : records) {
    if ((record->flags & record_outside_range) && !context.inc_slack) continue;
    rows.write(*record);
  }
}

}  // namespace zanvik
