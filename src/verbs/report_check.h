// What `check` finds in a log, for the head of a report.
#pragma once

#include "report/report_head.h"
#include "source/found_log.h"

namespace zanvik {

// Fills in the log's checksum and findings, at most `room` of them. Not for streams, which can be
// read once.
void check_for_report(const found_log& log, std::size_t room, head_log& out);

}  // namespace zanvik
