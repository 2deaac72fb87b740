// The charts' section.
#include "report/html_writer.h"
#include "report/page_parts.h"
#include "report/report_limits.h"

namespace zanvik {

std::vector<host_chart> make_charts(const activity& counts, const chart_axis& axis) {
  std::vector<host_chart> charts;
  for (const std::uint32_t host : charted_hosts(counts)) {
    charts.push_back(make_host_chart(counts, axis, host));
  }
  return charts;
}

std::string activity_html(const activity& counts, const chart_axis& axis,
                          const std::vector<host_chart>& charts) {
  if (axis.columns.empty()) return {};
  html_writer html;
  html.markup("<section id=\"activity\"><h2>Activity</h2>\n<p class=\"hint\">Above: all events, ");
  html.markup(
      "a row for each hour, darker for more. Below: what the tables hold, each kind by its ");
  html.markup("own measure. ");
  html.text(axis.unit == "day"     ? "Days"
            : axis.unit == "week"  ? "Weeks"
            : axis.unit == "month" ? "Months"
                                   : "Years");
  html.markup(" without events are left out. Click or drag to narrow all tables.</p>\n");
  std::uint64_t uncharted = counts.uncharted();
  for (const host_chart& chart : charts) {
    uncharted += chart.uncharted;
    if (counts.hosts().size() > 1) {
      html.markup("<h3>").text(counts.hosts()[chart.host]).markup(" <small>");
      html.number(counts.events_of(chart.host)).markup(" events</small></h3>\n");
    }
    html.markup(chart_html(counts, axis, chart));
  }
  if (charts.size() < counts.hosts().size()) {
    html.markup("<p>").text(
        counted(counts.hosts().size() - charts.size(), "more computer", "more computers"));
    html.markup(" with fewer events have no chart.</p>\n");
  }
  if (uncharted != 0) {
    html.markup("<p>").text(counted(uncharted, "event", "events"));
    html.markup(" without a time, or of days that are too many, are in no chart.</p>\n");
  }
  html.markup("</section>\n");
  return html.take();
}

}  // namespace zanvik
