// Writes logs to make reports of into a folder that is there: the incident; with --markup, logs
// that hold markup in every field; with --long, 400 days of one logon each, by turns at 9 and at 3
// o'clock; with --sessions, remote desktop sessions whole and in parts. For scripts/test-report.
#include <exception>
#include <iostream>
#include <string>

#include "incident_builder.h"
#include "markup_logs.h"

namespace {

zanvik::testing::log_builder long_log() {
  using namespace zanvik::testing;
  constexpr std::uint64_t hour = 36'000'000'000;
  log_builder log;
  for (std::uint64_t day = 0; day < 400;) {
    chunk_builder chunk;
    for (const std::uint64_t end = day + 40; day < end; ++day) {
      const std::uint64_t time = filetime(2023, 1, 2) + (24 * day + (day % 2 == 0 ? 9 : 3)) * hour;
      chunk.add(record(day + 1, {.event_id = 4624,
                                 .provider = "Microsoft-Windows-Security-Auditing",
                                 .filetime = time,
                                 .data = {{"TargetUserName", slot::utf16("anna")}}}));
    }
    log.chunk(chunk);
  }
  return log;
}

// Session 2 breaks off and goes on from another place; 3 is a logon at the machine; 4 began before
// the log; 5 has no end.
zanvik::testing::log_builder session_log() {
  using namespace zanvik::testing;
  struct session_event {
    std::uint32_t event_id;
    const char* session;
    const char* address;
    std::uint64_t minute;
  };
  constexpr session_event events[] = {
      {21, "2", "10.0.0.8", 0},  {21, "3", "LOCAL", 1},     {24, "2", "10.0.0.8", 65},
      {25, "2", "10.0.0.9", 70}, {24, "4", "10.0.0.7", 71}, {23, "2", "", 72},
      {23, "3", "", 73},         {21, "5", "10.0.0.6", 74},
  };
  chunk_builder chunk;
  std::uint64_t number = 1;
  for (const session_event& event : events) {
    constexpr std::uint64_t minute = 600'000'000;
    chunk.add(
        record(number++, {.event_id = event.event_id,
                          .provider = "Microsoft-Windows-TerminalServices-LocalSessionManager",
                          .filetime = filetime(2024, 5, 6) + event.minute * minute,
                          .data = {{"User", slot::utf16("CORP\\eva")},
                                   {"SessionID", slot::utf16(event.session)},
                                   {"Address", slot::utf16(event.address)}}}));
  }
  return log_builder().chunk(chunk);
}

}  // namespace

int main(int argc, char** argv) {
  using namespace zanvik::testing;
  const std::string kind = argc == 3 ? argv[1] : "";
  if (argc != 2 && kind != "--markup" && kind != "--long" && kind != "--sessions") {
    std::cerr << "usage: make_report_logs [--markup|--long|--sessions] <folder>\n";
    return 1;
  }
  const std::string folder = std::string(argv[argc - 1]) + "/";
  try {
    if (kind == "--long") {
      long_log().write(folder + "long.evtx");
    } else if (kind == "--sessions") {
      session_log().write(folder + "sessions.evtx");
    } else if (kind == "--markup") {
      std::size_t number = 0;
      for (const log_builder& log : markup_logs()) {
        log.write(folder + "<img src=x onerror=ran=3>" + std::to_string(number++) + ".evtx");
      }
    } else {
      for (const auto& [name, log] : incident_logs()) log.write(folder + name);
    }
  } catch (const std::exception& problem) {
    std::cerr << problem.what() << "\n";
    return 1;
  }
  return 0;
}
