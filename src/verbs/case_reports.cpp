#include "verbs/case_reports.h"

#include "verbs/log_options.h"

namespace zanvik {

bool report_kept(const kept_log& kept, const log_row& log, bool quiet) {
  if (kept.selection != log.selection) {
    report_problem(log.path, "is in the case with another selection of its events (" +
                                 (kept.selection.empty() ? "all" : kept.selection) + ")");
    return false;
  }
  const std::string as = kept.path == log.path ? "" : ", as " + kept.path;
  if (!quiet) report_problem(log.path, "is in the case already" + as);
  return true;
}

}  // namespace zanvik
