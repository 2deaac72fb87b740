// The rows of the tables as JSON for the page's script.
//
// A column is a list of its different values, sorted as a reader would sort them, and a number in
// that list for each row; so the script sorts and searches numbers. A column with one value for all
// rows has no numbers, one without any value is left out. Times and record numbers are differences
// to the row before.
#pragma once

#include "export/output_buffer.h"
#include "report/collector.h"

namespace zanvik {

// [{"name": ..., "total": ..., "time": [...], "columns": [...]}, ...]; tables without rows are left
// out.
void write_tables_json(output_buffer& out, const report_collector& collected);

// Whether a reader would put `a` before `b`: numbers by value, texts without regard to case.
bool reads_before(std::string_view a, std::string_view b);

}  // namespace zanvik
