#include "report/page.h"

#include "report/html_writer.h"
#include "report/page_files.h"
#include "report/page_parts.h"
#include "report/table_json.h"

namespace zanvik {
namespace {

// A SHA-256 in hexadecimal digits as a source of a content security policy.
std::string policy_source(std::string_view hex) {
  constexpr std::string_view digits =
      "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  const auto value = [](char c) {
    return static_cast<unsigned>(c <= '9' ? c - '0' : c - 'a' + 10);
  };
  std::string out = "'sha256-";
  // 256 bits are 43 digits of 6 bits, the last of which holds 4, and a mark.
  for (std::size_t digit = 0; digit < 43; ++digit) {
    unsigned bits = 0;
    for (std::size_t bit = digit * 6; bit < digit * 6 + 6; ++bit) {
      const bool set = bit < 256 && (value(hex[bit / 4]) >> (3 - bit % 4) & 1) != 0;
      bits = bits << 1 | (set ? 1 : 0);
    }
    out += digits[bits];
  }
  return out + "='";
}

std::string page_start(const report_collector& collected) {
  html_writer html;
  html.markup(
      "<!DOCTYPE html>\n<html lang=\"en\">\n<head>\n<meta charset=\"utf-8\">\n"
      "<meta http-equiv=\"Content-Security-Policy\" content=\"default-src 'none'; script-src ");
  html.markup(policy_source(page_files::script_sha256)).markup("; style-src ");
  html.markup(policy_source(page_files::style_sha256));
  html.markup(
      "; base-uri 'none'; form-action 'none'\">\n"
      "<meta name=\"viewport\" content=\"width=device-width, initial-scale=1\">\n"
      "<meta name=\"referrer\" content=\"no-referrer\">\n<title>Event logs of ");
  const auto& hosts = collected.counts().hosts();
  if (hosts.size() == 1) {
    html.text(hosts.front());
  } else {
    html.number(hosts.size()).markup(" computers");
  }
  html.markup("</title>\n<style>").markup(page_files::style);
  html.markup("</style>\n</head>\n<body>\n");
  return html.take();
}

}  // namespace

void write_page(output_buffer& out, const report_head& head, const report_collector& collected) {
  out.append(page_start(collected));
  out.append(overview_html(head, collected));
  out.append(highlights_html(collected));
  const chart_axis axis = make_axis(collected.counts());
  const std::vector<host_chart> charts = make_charts(collected.counts(), axis);
  out.append(activity_html(collected.counts(), axis, charts));
  out.append(
      "<noscript><p class=\"note\">The tables need the script of this page.</p></noscript>\n"
      "<main id=\"tables\"></main>\n");
  out.append(sources_html(head, collected));
  out.append("<script type=\"application/json\" id=\"data\">{\"logs\":[");
  std::string logs;
  for (const head_log& log : head.logs) {
    if (!logs.empty()) logs += ',';
    append_json(logs, visible(log.path));
  }
  out.append(logs + "],\"chart\":" + charts_json(axis, charts) + ",\"tables\":");
  write_tables_json(out, collected);
  out.append("}</script>\n<script>");
  out.append(page_files::script);
  out.append("</script>\n</body>\n</html>\n");
}

}  // namespace zanvik
