// The logs with their checksums and findings, and how the report was made.
#include "report/html_writer.h"
#include "report/page_parts.h"
#include "report/report_limits.h"
#include "report/report_times.h"

namespace zanvik {
namespace {

void add_findings(html_writer& html, const head_log& log) {
  if (!log.checked) {
    html.markup("not checked");
    return;
  }
  if (log.findings.empty()) {
    html.markup("none");
    return;
  }
  html.markup("<details><summary>");
  html.text(counted(log.finding_count, "finding", "findings"));
  if (log.note_count != 0) html.text(", " + counted(log.note_count, "note", "notes"));
  html.markup("</summary><ul>");
  for (const head_finding& finding : log.findings) {
    html.markup(finding.is_note ? "<li>" : "<li class=\"finding\"><strong>");
    html.text(finding.kind).markup(finding.is_note ? "" : "</strong>");
    html.markup(" at ").number(finding.offset).markup(": ").any_text(finding.detail);
    html.markup("<br><small>").text(finding.meaning).markup("</small></li>");
  }
  const std::uint64_t listed = log.findings.size(), all = log.finding_count + log.note_count;
  if (listed < all) html.markup("<li>").number(all - listed).markup(" more</li>");
  html.markup("</ul></details>");
}

void add_logs(html_writer& html, const report_head& head) {
  html.markup(
      "<div class=\"wide\"><table><thead><tr><th>Log</th><th>Bytes</th><th>Events</th>"
      "<th>First event</th><th>Last event</th><th>Findings of check</th><th>SHA-256</th></tr>"
      "</thead><tbody>\n");
  for (const head_log& log : head.logs) {
    html.markup("<tr><td>").any_text(log.path).markup("</td><td class=\"n\">").number(log.size);
    html.markup("</td><td class=\"n\">").number(log.events);
    html.markup("</td><td>").text(time_text(log.first));
    html.markup("</td><td>").text(time_text(log.last)).markup("</td><td>");
    add_findings(html, log);
    html.markup("</td><td class=\"hash\">").text(log.sha256.empty() ? "-" : log.sha256);
    html.markup("</td></tr>\n");
  }
  html.markup("</tbody></table></div>\n");
}

}  // namespace

std::string sources_html(const report_head& head, const report_collector& collected) {
  html_writer html;
  html.markup("<section id=\"sources\"><h2>Logs</h2>\n");
  if (!head.can_check) html.markup("<p>The program was built without checks of logs.</p>\n");
  add_logs(html, head);
  if (!head.problems.empty()) {
    html.markup("<h3>What could not be read</h3><ul>");
    for (const std::string& problem : head.problems) {
      html.markup("<li>").any_text(problem).markup("</li>\n");
    }
    html.markup("</ul>\n");
  }
  html.markup("</section>\n<section id=\"made\"><h2>How this was made</h2>\n<p>By zanvik ");
  html.text(head.version).markup(" with <code>").any_text(head.command_line);
  html.markup("</code>. All times are UTC and are the events' own.");
  std::uint64_t left_out = collected.scripts_left_out();
  for (const stored_table& table : collected.rows().tables())
    left_out += table.total - table.rows();
  if (left_out != 0) {
    html.markup(" The page holds ").number(report_limits::rows);
    html.markup(" rows: ").number(left_out);
    html.markup(
        " older ones of the longest tables are left out. <code>zanvik export --format sqlite -o "
        "case.db</code> has them all.");
  }
  html.markup("</p></section>\n");
  return html.take();
}

}  // namespace zanvik
