// Title, counts, first and last event, and a link to each table.
#include <algorithm>

#include "report/html_writer.h"
#include "report/page_parts.h"
#include "report/report_times.h"

namespace zanvik {
namespace {

constexpr std::size_t named_hosts = 5;

void add_title(html_writer& html, const activity& counts) {
  html.markup("<h1>");
  const auto& hosts = counts.hosts();
  for (std::size_t i = 0; i < std::min(hosts.size(), named_hosts); ++i) {
    if (i != 0) html.markup(", ");
    html.text(hosts[i]);
  }
  if (hosts.size() > named_hosts) {
    html.text(" and " + counted(hosts.size() - named_hosts, "more computer", "more computers"));
  }
  if (hosts.empty()) html.markup("No events");
  html.markup("</h1>\n<p class=\"span\">");
  if (counts.first() != 0) {
    html.text(time_text(counts.first())).markup(" to ").text(time_text(counts.last()));
    html.markup(" UTC");
  }
  html.markup("</p>\n");
}

void add_fact(html_writer& html, std::string_view name, const std::string& value,
              std::string_view mark = {}) {
  html.markup("<div><dt>").text(name).markup("</dt><dd");
  if (!mark.empty()) html.markup(" class=\"").markup(mark).markup("\"");
  html.markup(">").text(value).markup("</dd></div>");
}

void add_facts(html_writer& html, const report_head& head, const activity& counts) {
  std::uint64_t bytes = 0, findings = 0, checked = 0;
  for (const head_log& log : head.logs) {
    bytes += log.size;
    findings += log.finding_count;
    checked += log.checked ? 1 : 0;
  }
  html.markup("<dl class=\"facts\">");
  add_fact(html, "Logs", counted(head.logs.size(), "log", "logs") + ", " + size_text(bytes));
  add_fact(html, "Events", grouped(counts.events()));
  add_fact(html, "Computers", grouped(counts.hosts().size()));
  add_fact(html, "Findings of check", checked == 0 ? "not checked" : grouped(findings),
           findings != 0 ? "alert" : "");
  if (!head.problems.empty()) {
    add_fact(html, "Problems", counted(head.problems.size(), "problem", "problems"), "alert");
  }
  html.markup("</dl>\n");
}

void add_links(html_writer& html, const report_collector& collected) {
  html.markup("<nav aria-label=\"Tables\"><ul>");
  for (std::size_t i = 0; i < collected.tables().size(); ++i) {
    const std::uint64_t total = collected.rows().tables()[i].total;
    if (total == 0) continue;
    const report_table& table = collected.tables()[i];
    html.markup("<li><a href=\"#").markup(table.name).markup("\" data-group=\"");
    html.markup(table.group).markup("\"><b>").number(total).markup("</b> ");
    html.text(table.title).markup("</a></li>");
  }
  html.markup("<li><a href=\"#sources\">Logs and findings</a></li></ul></nav>\n");
}

}  // namespace

std::string overview_html(const report_head& head, const report_collector& collected) {
  html_writer html;
  html.markup("<header>\n");
  add_title(html, collected.counts());
  add_facts(html, head, collected.counts());
  add_links(html, collected);
  html.markup("</header>\n");
  return html.take();
}

std::string counted(std::uint64_t count, std::string_view one, std::string_view many) {
  return grouped(count) + " " + std::string(count == 1 ? one : many);
}

std::string size_text(std::uint64_t bytes) {
  if (bytes < 1024) return counted(bytes, "byte", "bytes");
  constexpr const char* units[] = {"KiB", "MiB", "GiB", "TiB"};
  std::size_t unit = 0;
  std::uint64_t tenths = bytes * 10 / 1024;
  while (tenths >= 10240 && unit + 1 < std::size(units)) {
    tenths /= 1024;
    ++unit;
  }
  return std::to_string(tenths / 10) + "." + std::to_string(tenths % 10) + " " + units[unit];
}

}  // namespace zanvik
