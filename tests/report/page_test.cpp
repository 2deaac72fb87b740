// The page that is made of built logs: its rows, and that no text leaves its place.
#include "report/page.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "exported_events.h"
#include "incident_builder.h"
#include "markup_logs.h"
#include "read_page.h"
#include "report/page_files.h"
#include "report/page_text.h"

namespace zanvik::testing {
namespace {

constexpr const char* security = "Microsoft-Windows-Security-Auditing";

std::string page_of(const std::vector<log_builder>& logs) {
  report_collector collected;
  report_head head;
  head.version = "1.0";
  for (const log_builder& log : logs) {
    own_bytes bytes(log.bytes());
    log_source source;
    source.path = "log" + std::to_string(head.logs.size());
    evtx_event_reader reader(collected);
    reader.set_source(source);
    collected.start_log();
    walk_evtx_block(bytes.span(), 0, reader, {});
    head_log& about = head.logs.emplace_back();
    about.path = source.path;
    about.events = collected.log_events().events;
  }
  collected.finish();
  std::string html;
  output_buffer out(html);
  write_page(out, head, collected);
  out.flush();
  return html;
}

std::size_t occurrences(std::string_view text, std::string_view what) {
  std::size_t count = 0;
  for (std::size_t at = 0; (at = text.find(what, at)) != std::string_view::npos; ++at) ++count;
  return count;
}

record_builder logon(std::uint64_t number, const char* account, const char* address,
                     std::uint32_t id = 4624) {
  return record(number, {.event_id = id,
                         .provider = security,
                         .channel = "Security",
                         .data = {{"TargetUserName", slot::utf16(account)},
                                  {"TargetDomainName", slot::utf16("FABRIKAM")},
                                  {"LogonType", slot::uint32(3)},
                                  {"SubStatus", slot::hex32(0xc000006a)},
                                  {"IpAddress", slot::utf16(address)}}});
}

TEST(page, rows_say_what_events_say) {
  const page_content page(
      page_of({log_builder().chunk({logon(1, "anna", "10.0.0.1"), logon(2, "tom", "-"),
                                    logon(3, "Anna", "10.0.0.2", 4625), record(4)})}));
  const page_table logons = page.table("logons");
  ASSERT_EQ(logons.rows.size(), 2U);
  EXPECT_EQ(logons.rows[0].at("account"), "anna");
  EXPECT_EQ(logons.rows[0].at("logon_type"), "network (3)");
  EXPECT_EQ(logons.rows[0].at("source_address"), "10.0.0.1");
  EXPECT_EQ(logons.rows[1].at("source_address"), "");
  EXPECT_EQ(logons.rows[1].at("record"), "2");
  EXPECT_EQ(logons.rows[1].at("log"), "log0");
  EXPECT_EQ(logons.rows[0].count("computer"), 0U);  // there is one
  EXPECT_EQ(logons.times[0], 1705305601000.0);      // 2024-01-15 08:00:01
  const page_table failed = page.table("failed_logons");
  ASSERT_EQ(failed.rows.size(), 1U);
  EXPECT_EQ(failed.rows[0].at("reason"), "wrong password (0xc000006a)");
}

TEST(page, rows_name_their_log_and_computer) {
  const log_builder there = log_builder().chunk(
      {record(9, {.event_id = 4624, .provider = security, .computer = "WS09", .data = {}})});
  const page_table logons =
      page_content(page_of({log_builder().chunk({logon(1, "anna", "x")}), there})).table("logons");
  ASSERT_EQ(logons.rows.size(), 2U);
  EXPECT_EQ(logons.rows[0].at("log") + " " + logons.rows[0].at("computer"), "log0 FABRIKAM-WS01");
  EXPECT_EQ(logons.rows[1].at("log") + " " + logons.rows[1].at("computer"), "log1 WS09");
  EXPECT_EQ(logons.rows[1].at("record"), "9");
}

TEST(page, a_long_column_is_sorted_as_people_read) {
  chunk_builder records;
  const char* const names[] = {"b10", "B2", "a", "10", "9", "010", ""};
  for (std::uint64_t i = 0; i < std::size(names); ++i) records.add(logon(i + 1, names[i], "x"));
  const page_content page(page_of({log_builder().chunk(records)}));
  std::string order;
  for (const json_value& column : page.data["tables"].items[0]["columns"].items) {
    if (column["name"].text != "account") continue;
    for (const json_value& value : column["values"].items) order += value.text + "|";
  }
  EXPECT_EQ(order, "9|10|010||a|b10|B2|");
}

// Every field of every source of every question holds markup.
TEST(page, markup_in_every_field_stays_text) {
  std::uint64_t sources = 0;
  for (const question& asked : questions()) sources += asked.sources.size();
  const std::string html = page_of(markup_logs());
  // The page's own elements and nothing else.
  EXPECT_EQ(occurrences(html, "<script"), 2U);
  EXPECT_EQ(occurrences(html, "</script"), 2U);
  EXPECT_EQ(occurrences(html, "<img"), 0U);
  EXPECT_EQ(occurrences(html, "\xe2\x80\xae"), 0U);
  EXPECT_EQ(occurrences(html, "\x01"), 0U);
  const page_content page(html);
  std::uint64_t rows = 0, cells = 0;
  for (const auto& [name, table] : page.tables) {
    rows += table.total;
    for (const auto& row : table.rows) {
      for (const auto& [column, value] : row) {
        cells += value.find(attack_shown) != value.npos ? 1 : 0;
      }
    }
  }
  EXPECT_EQ(rows, sources - 1);  // both sources of script blocks have one ID
  EXPECT_GT(cells, 4 * sources);
}

// The bytes of 43 digits and a mark, in hexadecimal.
std::string hex_of_base64(std::string_view text) {
  std::string bits, out;
  for (const char c : text.substr(0, 43)) {
    const std::size_t digit =
        std::string_view("ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/")
            .find(c);
    for (int bit = 5; bit >= 0; --bit) bits += (digit >> bit & 1) != 0 ? '1' : '0';
  }
  for (std::size_t i = 0; i + 4 <= 256; i += 4) {
    out += "0123456789abcdef"[std::stoul(bits.substr(i, 4), nullptr, 2)];
  }
  return out;
}

TEST(page, policy_names_the_script_and_the_style_by_hash) {
  const std::string html = page_of({log_builder().chunk({record(1)})});
  const std::size_t policy = html.find("Content-Security-Policy");
  ASSERT_NE(policy, std::string::npos);
  const std::string_view line = std::string_view(html).substr(policy, 400);
  for (const char* const part : {"default-src 'none'; script-src 'sha256-", "; style-src 'sha256-",
                                 "; base-uri 'none'", "; form-action 'none'\""}) {
    EXPECT_NE(line.find(part), std::string_view::npos) << part;
  }
  EXPECT_EQ(line.find("unsafe"), std::string_view::npos);
  const std::size_t script_hash = line.find("script-src 'sha256-") + 19;
  EXPECT_EQ(hex_of_base64(line.substr(script_hash, 44)), page_files::script_sha256);
  const std::size_t style_hash = line.find("style-src 'sha256-") + 18;
  EXPECT_EQ(hex_of_base64(line.substr(style_hash, 44)), page_files::style_sha256);
  // What is hashed is what stands between the tags.
  EXPECT_NE(html.find("<script>" + std::string(page_files::script) + "</script>"),
            std::string::npos);
  EXPECT_NE(html.find("<style>" + std::string(page_files::style) + "</style>"), std::string::npos);
  // Nothing in it writes markup or runs texts.
  for (const char* const word : {"innerHTML", "outerHTML", "insertAdjacentHTML", "document.write",
                                 "eval(", "Function(", "http:", "https:"}) {
    std::string script = page_files::script;
    const std::size_t space = script.find("http://www.w3.org/2000/svg");
    if (space != std::string::npos) script.erase(space, 26);
    EXPECT_EQ(script.find(word), std::string::npos) << word;
  }
}

TEST(page, a_script_is_put_together_and_a_task_shows_what_it_runs) {
  std::vector<log_builder> logs;
  for (const auto& [name, log] : incident_logs()) logs.push_back(log);
  const page_content page(page_of(logs));
  const page_table scripts = page.table("script_blocks");
  ASSERT_EQ(scripts.rows.size(), 1U);
  EXPECT_EQ(scripts.rows[0].at("script"),
            "# collects files\n$from = 'C:\\Users'\n$list = Get-ChildItem $from -Recurse\n"
            "\n[part 3 is missing]\nRemove-Item $list\n");
  EXPECT_EQ(scripts.rows[0].at("parts"), "3 of 4; missing: 3");
  EXPECT_TRUE(page.table("tasks").rows.at(0).at("content").starts_with(
      "powershell.exe -w hidden -f C:\\Users\\Public\\u.ps1\n\n<?xml"));
  EXPECT_EQ(page.table("clock_changes").rows.at(0).at("offset_seconds"), "-3600.000");
}

TEST(page, what_stands_out_of_a_break_in) {
  std::vector<log_builder> logs;
  for (const auto& [name, log] : incident_logs()) logs.push_back(log);
  const std::string html = page_of(logs);
  const char* const sentences[] = {
      "Defender reported 1 threat: HackTool:Win32/Example.A (1); on 2024-03-16 01:21:10",
      "Protection by Defender was turned off on 2024-03-16 01:20:50",
      "Logs were cleared once: Application (1); on 2024-03-16 01:44:00, by helpdesk",
      "helpdesk logged on from 198.51.100.77 on 2024-03-16 01:15:58, after 140 failed logons",
      "S-1-5-21-1-2-3-1107 to Administrators",
      "1 account was created: support$",
      "The clock was set by more than a minute once; seconds: -3600.000",
      "1 service was installed: UpdaterSvc",
      "1 scheduled task was created: \\Updater",
      "1 remote desktop logon, by helpdesk (1), from 198.51.100.77 (1)",
  };
  for (const char* const sentence : sentences) {
    EXPECT_NE(html.find(sentence), std::string::npos) << sentence;
  }
  // Where nothing happens, nothing stands out.
  EXPECT_EQ(page_of({log_builder().chunk({record(1)})}).find("id=\"stands_out\""),
            std::string::npos);
}

// More events than the page holds: the newest are there, all are counted, and the page says so.
TEST(page, holds_200000_rows) {
  constexpr std::uint64_t passes = 3'400;
  chunk_builder records;
  for (std::uint64_t i = 0; i < 60; ++i) {
    records.add(record(i + 1, {.event_id = 4624,
                               .provider = security,
                               .filetime = filetime(2024, 1, 1) + i,
                               .data = {{"TargetUserName", slot::utf16(i % 2 ? "a" : "b")}}}));
  }
  log_builder log = log_builder().chunk(records).chunk({logon(61, "anna", "10.0.0.1", 4625)});
  own_bytes bytes(log.bytes());
  report_collector collected;
  log_source source;
  evtx_event_reader reader(collected);
  reader.set_source(source);
  collected.start_log();
  for (std::uint64_t pass = 0; pass < passes; ++pass) {
    walk_evtx_block(bytes.span(), 0, reader, {});
  }
  collected.finish();
  std::string html;
  output_buffer out(html);
  report_head head;
  head.logs.resize(1);
  write_page(out, head, collected);
  out.flush();
  const page_content page(html);
  EXPECT_EQ(page.table("logons").total, 60 * passes);
  EXPECT_EQ(page.table("failed_logons").rows.size(), passes);
  EXPECT_EQ(page.table("logons").rows.size(), 200'000 - passes);
  EXPECT_NE(html.find(grouped(60 * passes + passes - 200'000) + " older ones"), std::string::npos);
  EXPECT_NE(html.find("zanvik export --format sqlite"), std::string::npos);
  EXPECT_NE(html.find("<dt>Events</dt><dd>" + grouped(61 * passes) + "</dd>"), std::string::npos);
  EXPECT_LT(html.size(), 10'000'000U);
}

TEST(page, without_any_event_there_is_a_page) {
  const std::string html = page_of({});
  EXPECT_NE(html.find("<h1>No events</h1>"), std::string::npos);
  EXPECT_TRUE(page_content(html).tables.empty());
}

}  // namespace
}  // namespace zanvik::testing
