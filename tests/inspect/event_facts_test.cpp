// What the events of a log say about the log.
#include "inspect/event_facts.h"

#include "ledger_of.h"

namespace zanvik::testing {
namespace {

// "name: detail" of each finding, in the order of their places.
std::vector<std::string> lines_of(const log_ledger& ledger) {
  std::vector<std::string> lines;
  for (const finding& found : ledger.findings.kept()) {
    lines.push_back(std::string(finding_name(found.kind)) + ": " + found.detail);
  }
  return lines;
}

constexpr const char* log_service = "Microsoft-Windows-Eventlog";

event cleared(std::uint32_t id) {
  return {.event_id = id,
          .provider = log_service,
          .form = payload_form::user_data,
          .data = {{"SubjectUserName", slot::utf16("mallory")}, {"Channel", slot::utf16("System")}},
          .user_data_element = "LogFileCleared"};
}

TEST(event_facts, signs_of_clearing_and_of_the_service) {
  const auto log = log_builder().chunk({
      record(1, cleared(1102)), record(2, cleared(104)),
      record(3, {.event_id = 1100, .provider = log_service}),
      record(4, {.event_id = 6006, .provider = "EventLog"}),
      record(5, {.event_id = 6005, .provider = "EventLog"}),
      record(6, {.event_id = 6008, .provider = "EventLog"}),
      record(7, {.event_id = 1102, .provider = "Fabrikam-Test"}),  // an ID alone says nothing
  });
  const log_ledger ledger = ledger_of(log);
  EXPECT_EQ(lines_of(ledger),
            (std::vector<std::string>{
                "log_cleared: 1102, 2024-01-15 08:00:01: the security log was cleared, by mallory",
                "log_cleared: 104, 2024-01-15 08:00:02: a log was cleared, channel System, by "
                "mallory",
                "service_stopped: 1100, 2024-01-15 08:00:03: the event log service shut down",
                "service_stopped: 6006, 2024-01-15 08:00:04: the event log service stopped",
                "service_started: 6005, 2024-01-15 08:00:05: the event log service started",
                "shutdown_unexpected: 6008, 2024-01-15 08:00:06: the last shutdown was "
                "unexpected"}));
  EXPECT_TRUE(ledger.findings.any_finding());
}

TEST(event_facts, a_legacy_log_that_was_cleared) {
  const auto log =
      evt_builder().add({.event_id = 517, .source = "Security", .computer = "XP"}).cursor();
  EXPECT_TRUE(names_of(ledger_of(log)).contains("log_cleared"));
}

event clock_set(std::uint32_t id, std::string provider, std::string old_name, std::uint64_t before,
                std::uint64_t after) {
  return {.event_id = id,
          .provider = std::move(provider),
          .filetime = after,
          .data = {{"NewTime", slot::filetime(after)}, {old_name, slot::filetime(before)}}};
}

TEST(event_facts, times_that_go_back) {
  const std::uint64_t noon = filetime(2024, 3, 1, 12), ten = filetime(2024, 3, 1, 10);
  const std::uint64_t minute = 60 * 10'000'000ull;
  struct row {
    const char* what;
    std::vector<record_builder> records;
    std::set<std::string> expected;
  };
  const row rows[] = {
      {"just a minute",
       {record(1, {.filetime = noon}), record(2, {.filetime = noon - minute})},
       {}},
      {"two hours, unexplained",
       {record(1, {.filetime = noon}), record(2, {.filetime = ten})},
       {"time_backwards"}},
      {"the system log tells of it",
       {record(1, {.filetime = noon}),
        record(2, clock_set(1, "Microsoft-Windows-Kernel-General", "OldTime", noon + minute, ten))},
       {"time_backwards_explained"}},
      {"the security log tells of it, later",
       {record(1, {.filetime = noon}), record(2, {.filetime = ten + minute}),
        record(3, clock_set(4616, "Microsoft-Windows-Security-Auditing", "PreviousTime", noon,
                            ten + 2 * minute))},
       {"time_backwards_explained"}},
      {"a clock change of another day",
       {record(1, {.filetime = noon}), record(2, {.filetime = ten}),
        record(3, clock_set(1, "Microsoft-Windows-Kernel-General", "OldTime", filetime(2024, 3, 9),
                            filetime(2024, 3, 8)))},
       {"time_backwards"}},
  };
  for (const row& row : rows) {
    SCOPED_TRACE(row.what);
    EXPECT_EQ(names_of(ledger_of(log_builder().chunk(chunk_builder(row.records)))), row.expected);
  }
}

TEST(event_facts, times_that_go_back_between_chunks) {
  const auto log = log_builder()
                       .chunk({record(1, {.filetime = filetime(2024, 3, 1, 12)})})
                       .chunk({record(2, {.filetime = filetime(2024, 3, 1, 10)})});
  EXPECT_EQ(lines_of(ledger_of(log)),
            (std::vector<std::string>{
                "time_backwards: from 2024-03-01 12:00:00 to 2024-03-01 10:00:00"}));
}

TEST(event_facts, a_log_that_begins_late) {
  EXPECT_EQ(lines_of(ledger_of(log_builder().chunk({record(42)}))),
            std::vector<std::string>{"begins_late: the first record is 42"});
  EXPECT_EQ(lines_of(ledger_of(log_builder().chunk({record(42, cleared(1102))}))).front(),
            "begins_late: the first record is 42, which reports that the log was cleared");
}

TEST(event_facts, counts_and_names) {
  const auto log = log_builder().chunk({
      record(1, {.event_id = 7, .computer = "OLD", .user_sid = "S-1-5-18"}),
      record(2, {.event_id = 8, .filetime = filetime(2024, 2, 1), .computer = "NEW"}),
      record(3, {.event_id = 8, .filetime = filetime(2024, 2, 1), .computer = "NEW"}),
  });
  const log_ledger ledger = ledger_of(log);
  const auto text = [](const std::vector<name_count>& counts) {
    std::string out;
    for (const name_count& one : counts) {
      out += std::to_string(one.count) + ' ' + one.name + ';';
    }
    return out;
  };
  EXPECT_EQ(text(ledger.events), "2 8 Fabrikam-Test;1 7 Fabrikam-Test;");
  EXPECT_EQ(text(ledger.computers), "2 NEW;1 OLD;");
  EXPECT_EQ(text(ledger.users), "1 S-1-5-18;");
  EXPECT_EQ(text(ledger.channels), "3 Application;");
  EXPECT_EQ(text(ledger.days), "1 2024-01-15;2 2024-02-01;");
  EXPECT_EQ(lines_of(ledger), std::vector<std::string>{"computer_changed: first event of NEW"});
}

}  // namespace
}  // namespace zanvik::testing
