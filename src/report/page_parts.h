// The parts of the page that need no script, as HTML.
#pragma once

#include <string>
#include <vector>

#include "report/activity_chart.h"
#include "report/collector.h"
#include "report/report_head.h"

namespace zanvik {

// Title, counts, first and last event, and a link to each table.
std::string overview_html(const report_head& head, const report_collector& collected);
// What stands out.
std::string highlights_html(const report_collector& collected);
// Charts of the hosts' days.
std::vector<host_chart> make_charts(const activity& counts, const chart_axis& axis);
std::string activity_html(const activity& counts, const chart_axis& axis,
                          const std::vector<host_chart>& charts);
// The logs with their checksums and findings, and how the report was made.
std::string sources_html(const report_head& head, const report_collector& collected);

}  // namespace zanvik
