// The report as one HTML file.
//
// In: what was collected, after `finish`, and what is known of the logs. Out: a file that loads
// nothing. Its content security policy allows nothing but its own script and style, which it names
// by their hashes. The rows are JSON in an element that is no script; everything else is there
// without the script.
#pragma once

#include "export/output_buffer.h"
#include "report/collector.h"
#include "report/report_head.h"

namespace zanvik {

void write_page(output_buffer& out, const report_head& head, const report_collector& collected);

}  // namespace zanvik
