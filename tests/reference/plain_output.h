// Tables and timelines of records the plain way, cell by cell: tests and fuzz targets compare the
// writers of src/output/ with it. Slow, short to read, and with little in common with the fast way
// except the texts of single cells. The same records, options and context give the same bytes.
#pragma once

#include <ostream>
#include <span>

#include "events/log_record.h"
#include "options/output_format.h"
#include "output/write_context.h"

namespace zanvik {

// One table for each event ID and provider, an empty line between them; without `output_csv` only
// the empty lines. `records` are in time order.
void write_plain_tables(std::ostream& out, std::span<const LogRecord* const> records,
                        const output_format& format, const write_context& context);

// A line for each record, in the form that `format` selects (the body file if it selects both), and
// the header while it is pending, until the first record.
void write_plain_timeline(std::ostream& out, std::span<const LogRecord* const> records,
                          const output_format& format, const write_context& context,
                          bool& header_pending);

}  // namespace zanvik
