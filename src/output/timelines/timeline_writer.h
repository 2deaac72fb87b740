// Writes selected records as one stream of timeline lines, the fast way: the log2timeline form or
// the body file. In: all records, in time order. Out: a line for each (none for a record without a
// valid time in the log2timeline form), and the header before the first line of a run.
//
// What depends only on the shape of a record is in a plan (timeline_fields.h), what depends on its
// provider and its log is kept as text, and values are copied from the record's block: nothing is
// allocated per record unless a value contains a line end. tests/reference/ has the plain way,
// which gives the same bytes.
#pragma once

#include <functional>
#include <ostream>
#include <span>
#include <string_view>

#include "events/log_record.h"
#include "options/output_format.h"
#include "output/row_buffer.h"
#include "output/timelines/timeline_fields.h"
#include "output/write_context.h"

namespace zanvik {

// Writes all records, in the form that `format` selects (the body file if it selects both); all
// bytes have reached `out` on return. The header goes before the first record of a run and clears
// `header_pending`.
void write_timeline(std::ostream& out, std::span<const LogRecord* const> records,
                    const output_format& format, const write_context& context,
                    bool& header_pending);

// Appends the lines without a header. `plans` are of the form's style, for all lines of a thread.
void append_timeline(row_buffer& out, field_plans& plans, std::span<const LogRecord* const> records,
                     const output_format& format, const write_context& context);

// The same without a header, in the order of `records`: calls `use` for each record that has a
// line, which lives during the call.
using line_use = std::function<void(const LogRecord& record, std::string_view line)>;
void render_timeline(std::span<const LogRecord* const> records, const output_format& format,
                     const write_context& context, const line_use& use);

}  // namespace zanvik
