#include "verbs/report_check.h"

#include <algorithm>

#include "inspect/inspect_log.h"
#include "report/report_limits.h"

namespace zanvik {

void check_for_report(const found_log& log, std::size_t room, head_log& out) {
  log_ledger ledger;
  inspect_log(log, ledger);
  out.checked = true;
  out.sha256 = ledger.sha256;
  room = std::min(room, report_limits::findings_of_log);
  // Findings first: notes are what is common in sound logs.
  for (const bool notes : {false, true}) {
    for (const finding& found : ledger.findings.kept()) {
      if ((found.weight == finding_weight::note) != notes) continue;
      if (out.findings.size() < room) {
        out.findings.push_back({std::string(finding_name(found.kind)), found.detail,
                                std::string(finding_meaning(found.kind)), found.offset, notes});
      }
    }
  }
  // Each kind is counted beyond what is kept of it.
  for (std::size_t i = 0; i < finding_kinds; ++i) {
    const auto kind = static_cast<finding_kind>(i);
    const std::uint64_t all = ledger.findings.count(kind);
    std::uint64_t kept = 0, kept_notes = 0;
    for (const finding& found : ledger.findings.kept()) {
      if (found.kind != kind) continue;
      ++kept;
      kept_notes += found.weight == finding_weight::note ? 1 : 0;
    }
    const bool rest_are_notes =
        kept != 0 ? kept_notes == kept : usual_weight(kind) == finding_weight::note;
    out.note_count += kept_notes + (rest_are_notes ? all - kept : 0);
    out.finding_count += kept - kept_notes + (rest_are_notes ? 0 : all - kept);
  }
}

}  // namespace zanvik
