// The counters of a log and the block they make.
#include <gtest/gtest.h>

#include <sstream>

#include "stats/log_statistics.h"

namespace zanvik {
namespace {

constexpr std::uint64_t noon = 130000000000000000;  // 2012-12-14 23:06:40
constexpr std::uint64_t second = 10000000;

// A kept record with two columns, one of them a literal of its template.
LogRecord kept_record(record_container& records, std::uint64_t event_id, std::uint64_t time,
                      std::string_view logon_type) {
  LogRecord record;
  record.event_id = event_id;
  record.time = time;
  record.shape = records.intern_shape(
      {{{"09:LogonType", false, {}}, {"Channel", true, "Security"}, {"Task", false, {}}}, 2});
  char* const block = records.arena().reserve(64);
  char* out = block;
  for (const std::string_view text : {logon_type, std::string_view("7")}) {
    out = write_cell_head(out, text.size(), false);
    out = std::copy(text.begin(), text.end(), out);
  }
  records.arena().keep(static_cast<std::size_t>(out - block));
  record.values = block;
  records.add(record);
  return records.last();
}

ReportCommand counting_command(std::uint64_t event_id, std::int32_t index,
                               std::vector<std::string> fields, std::vector<std::string> lower) {
  ReportCommand command;
  command.event_id = event_id;
  command.has_hist = true;
  command.hist_index = index;
  command.hist_fields = std::move(fields);
  command.hist_fields_lower = std::move(lower);
  return command;
}

std::string block_of(const LogStatistics& stats) {
  std::ostringstream out;
  write_statistics(stats, out);
  return out.str();
}

TEST(statistics, a_log_without_records_says_so) {
  LogStatistics stats;
  init_statistics(stats, "a/b.evt", "", false, 0, "yyyy-mm-dd", "hh:mm:ss");
  EXPECT_EQ(block_of(stats),
            "log: a/b.evt\n"
            "format: evt [older XP format]\n"
            "No events found in log OR log skipped based on filter selected\n"
            "\n");
}

TEST(statistics, rows_by_event_id_with_their_times) {
  LogStatistics stats;
  init_statistics(stats, "x.evtx", "system", true, 0, "mm/dd/yy", "hh:mm:ss");
  // IDs with the same place in the counters' short cut: 64 apart.
  count_record(stats, 74, noon + 2 * second);
  count_record(stats, 10, noon);
  count_record(stats, 74, noon + second);
  count_record(stats, 74, 0);  // no valid time: counted, and shown as blanks
  EXPECT_EQ(block_of(stats),
            "log: x.evtx\n"
            "format: evtx [newer Vista/Win7 format]\n"
            "type: system\n"
            "\n"
            "--- overall log stats ----\n"
            "event id | occurrences | from date | from time | to date   | to time  \n"
            "     all |           4 |           |           | 12/14/2012 |  23:06:42\n"
            "      10 |           1 | 12/14/2012 |  23:06:40 | 12/14/2012 |  23:06:40\n"
            "      74 |           3 |           |           | 12/14/2012 |  23:06:42\n"
            "\n");
}

TEST(statistics, combinations_by_command_and_key) {
  LogStatistics stats;
  init_statistics(stats, "s.evtx", "security", true, 2, "yyyy-mm-dd", "hh:mm:ss");
  record_container records;
  const std::vector<ReportCommand> commands{
      counting_command(4624, 0, {"09:LogonType", "task"}, {"09:logontype", "task"}),
      counting_command(4624, 1, {"channel"}, {"channel"}),
      counting_command(4625, 1, {"channel"}, {"channel"}),         // for another event
      counting_command(4624, 1, {"nosuchfield"}, {"nosuchfield"})  // which no record has
  };
  const auto count = [&](std::uint64_t id, std::uint64_t time, std::string_view type,
                         std::size_t first) {
    count_record(stats, id, time);
    count_hist_from(stats, commands, first, kept_record(records, id, time, type));
  };
  count(4624, noon, "3", 0);
  count(4624, noon + 5 * second, "3", 0);
  count(4624, noon, "", 0);
  count(4624, noon, "3", 1);  // kept by the second command: the first does not see it
  const std::string block = block_of(stats);
  EXPECT_EQ(block.substr(block.find("\n--- filter")),
            "\n--- filter stats --- [refer to filter# for details]\n"
            "event id | occurrences | from date  | from time | to date    | to time   | filter# | "
            "key values  | key fields            \n"  // "Security" and a separator: 11 wide
            "    4624 |           2 | 2012-12-14 |  23:06:40 | 2012-12-14 |  23:06:45 |       0 | "
            "       3; 7 |     09:LogonType; task\n"
            "    4624 |           1 | 2012-12-14 |  23:06:40 | 2012-12-14 |  23:06:40 |       0 | "
            "  <null>; 7 |     09:LogonType; task\n"
            "    4624 |           4 | 2012-12-14 |  23:06:40 | 2012-12-14 |  23:06:45 |       1 | "
            "   Security |                channel\n"
            "\n");
}

// A command may use the long form of an ID, of which a legacy record has the low half.
TEST(statistics, a_legacy_id_has_sixteen_bits) {
  record_container records;
  for (const bool is_evtx : {false, true}) {
    LogStatistics stats;
    init_statistics(stats, "a", "system", is_evtx, 1, "", "");
    LogRecord record = kept_record(records, 7, noon, "3");
    record.is_evtx = is_evtx;
    const std::vector<ReportCommand> commands{
        counting_command(0x40000007, 0, {"channel"}, {"channel"})};
    count_hist_from(stats, commands, 0, record);
    EXPECT_EQ(stats.hist_tables[0].size(), is_evtx ? 0u : 1u);
  }
}

}  // namespace
}  // namespace zanvik
