// One table of records, cell by cell: the reference for the fast way of event_table.h.
//
// Each record's fields are put into a map and each row goes through the plain table engine. Slow,
// short to read, and with nothing in common with the fast way but names and widths of the fixed
// columns. The same records, options and context give the same bytes both ways.
#pragma once

#include <ostream>
#include <span>

#include "events/log_record.h"
#include "options/output_format.h"
#include "output/write_context.h"

namespace zanvik {

void write_plain_event_table(std::ostream& out, std::span<const LogRecord* const> records,
                             output_format& format, const write_context& context);

}  // namespace zanvik
