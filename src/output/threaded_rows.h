// Tables and timelines of many records by several threads: the same bytes as those of one.
//
// A table of many records is surveyed in parts, which are joined before its header is made; then
// its rows are made in parts. Small tables are made whole, several in one job.
#pragma once

#include <ostream>
#include <span>

#include "events/log_record.h"
#include "options/output_format.h"
#include "output/write_context.h"
#include "pipeline/ordered_work.h"

namespace zanvik {

// Writes records in time order in the form that `format` selects, as `write_records` does.
void write_records_threaded(std::ostream& out, std::span<const LogRecord* const> records,
                            const output_format& format, const write_context& context,
                            bool& header_pending, ordered_work& threads);

}  // namespace zanvik
