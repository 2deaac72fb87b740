// What stands out, each sentence a button that leads to its rows.
#include "report/highlights.h"
#include "report/html_writer.h"
#include "report/page_parts.h"
#include "report/report_times.h"

namespace zanvik {

std::string highlights_html(const report_collector& collected) {
  const std::vector<highlight> found = find_highlights(collected);
  if (found.empty()) return {};
  html_writer html;
  html.markup("<section id=\"stands_out\"><h2>What stands out</h2>\n<ul class=\"stands\">\n");
  for (const highlight& one : found) {
    const char* const weight = one.weight == highlight_weight::high     ? "high"
                               : one.weight == highlight_weight::middle ? "middle"
                                                                        : "plain";
    html.markup("<li class=\"").markup(weight).markup("\"><span>").text(one.text);
    html.markup("</span> <button type=\"button\" data-table=\"").text(one.table);
    html.markup("\" data-find=\"").text(one.find).markup("\" data-from=\"");
    html.text(std::to_string(unix_milliseconds(one.first))).markup("\" data-to=\"");
    html.text(std::to_string(unix_milliseconds(one.last) + 1)).markup("\">show</button></li>\n");
  }
  html.markup("</ul></section>\n");
  return html.take();
}

}  // namespace zanvik
