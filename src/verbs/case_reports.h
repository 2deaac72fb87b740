// What is said of a log that is in the case already.
#pragma once

#include "case/case_rows.h"

namespace zanvik {

// Says that `log` is in the case, as `kept`; says nothing if `quiet` and it is the same selection
// of its events. Returns false if it is another one, which is a problem.
bool report_kept(const kept_log& kept, const log_row& log, bool quiet);

}  // namespace zanvik
