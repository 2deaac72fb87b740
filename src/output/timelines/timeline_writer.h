// Writes selected records as one stream of timeline lines, the fast way: the log2timeline form or
// the body file. In come records in time order, none of which is left out; out goes a line each
// (none for a record without a valid time in the log2timeline form), and before the first of a run
// the header.
//
// What depends on the shape of a record only is in a plan (timeline_fields.h), what goes with its
// provider and its log is kept as text, and values are copied from the record's block: nothing is
// allocated per record unless a value holds a line end. tests/reference/ has the plain way, which
// gives the same bytes.
#pragma once

#include <functional>
#include <ostream>
#include <span>
#include <string_view>

#include "events/log_record.h"
#include "options/output_format.h"
#include "output/write_context.h"

namespace zanvik {

// Writes all records, in the form that `format` asks for (the body file if it asks for both); all
// bytes have reached `out` on return. The header goes before the first record of a run, which
// clears `header_pending`.
void write_timeline(std::ostream& out, std::span<const LogRecord* const> records,
                    const output_format& format, const write_context& context,
                    bool& header_pending);

// The same without a header, in the order of `records`: calls `use` for each record that has a
// line, which lives during the call.
using line_use = std::function<void(const LogRecord& record, std::string_view line)>;
void render_timeline(std::span<const LogRecord* const> records, const output_format& format,
                     const write_context& context, const line_use& use);

}  // namespace zanvik
