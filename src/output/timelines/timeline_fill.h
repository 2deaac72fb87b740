// From a record to a timeline row or a body row, field by field: the plain way, which
// timeline_writer.h is held against. Shape, values and texts of the record must still be alive.
#pragma once

#include <ostream>
#include <span>

#include "events/log_record.h"
#include "options/output_format.h"
#include "output/timelines/timeline_body_row.h"
#include "output/timelines/timeline_row.h"
#include "output/write_context.h"

namespace zanvik {

// Every field with a value goes into `desc`, whatever `allparams` says. The host is the record's
// own computer, or empty; the one of the options never shows, which is meant.
timeline_row timeline_row_of(const LogRecord& record, const output_format& format,
                             const write_context& context);

body_row body_row_of(const LogRecord& record, const write_context& context);

// Writes all records, in the form that `format` asks for (the body file if it asks for both), and
// clears its header flag with the first one.
void write_plain_timeline(std::ostream& out, std::span<const LogRecord* const> records,
                          output_format& format, const write_context& context);

}  // namespace zanvik
