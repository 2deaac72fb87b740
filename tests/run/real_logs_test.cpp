// The built program with the real logs beside the source folder: it must find all their records,
// and content that was read from their bytes by hand. Whole rows are in tests/golden/real_*.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>

#include "program_run.h"

namespace zanvik::testing {
namespace {

const std::filesystem::path folder =
    std::filesystem::path(ZANVIK_SOURCE_DIR).parent_path() / "shared" / "logs";

class real_logs : public ::testing::Test {
 protected:
  void SetUp() override {
    if (!exists(folder)) GTEST_SKIP() << "there are no real logs beside the source folder";
  }
};

std::string listing(const std::string& log, std::vector<std::string> options) {
  options.insert(options.end(), {"-log", (folder / log).string(), "-csv", "-quiet"});
  const program_run run = run_zanvik(options);
  EXPECT_EQ(run.status, 0) << run.err;
  return run.out;
}

std::size_t rows_in(const std::string& csv) {
  const auto lines = lines_of(csv);
  return static_cast<std::size_t>(std::count_if(lines.begin(), lines.end(), [](const auto& line) {
    return !line.empty() && line[0] >= '0' && line[0] <= '9';
  }));
}

// Counts as the folder's list of sources gives them: | `attack/openssh.evtx` | 7 |
TEST_F(real_logs, show_as_many_records_as_they_hold) {
  std::size_t logs = 0;
  for (const std::string& line : lines_of(file_text((folder / "SOURCES.md").string()))) {
    const auto cells = split(line, '|');
    if (cells.size() != 4 || !cells[1].starts_with(" `")) continue;
    std::string digits = cells[2];
    std::erase_if(digits, [](char c) { return c < '0' || c > '9'; });
    if (digits.empty()) continue;
    const std::string name = cells[1].substr(2, cells[1].size() - 4);
    // Records outside the declared range are not shown; one log has such records.
    const std::size_t hidden = name.find("TerminalServices") == std::string::npos ? 0 : 98;
    EXPECT_EQ(rows_in(listing(name, {})), std::stoul(digits) - hidden) << name;
    ++logs;
  }
  EXPECT_EQ(logs, 33u);
  EXPECT_EQ(rows_in(listing("legacy/SysEvent.Evt", {})), 6500u);
}

// Counted by a short script, independent of this program: it walks the headers, scans the free
// tails, and tests whether the template of a record exists.
TEST_F(real_logs, slack_holds_as_many_as_a_scan_of_their_bytes_finds) {
  const std::string remote = "win7/Microsoft-Windows-TerminalServices-RemoteConnectionManager";
  const std::pair<std::string, std::size_t> rows[] = {{"damaged/bad_chunk_magic.evtx", 81},
                                                      {"damaged/no_crc32.evtx", 31},
                                                      {remote + "%4Operational.evtx", 367},
                                                      {"damaged/System2.evtx", 0}};
  for (const auto& [log, count] : rows) {
    const std::size_t all = rows_in(listing(log, {"-inc_slack"}));
    EXPECT_EQ(all - rows_in(listing(log, {})), count) << log;
  }
}

// Read from hex dumps: header, slot table and values of records in slack and in a legacy log.
TEST_F(real_logs, rows_say_what_the_bytes_say) {
  const std::tuple<const char*, std::vector<std::string>, const char*, const char*> rows[] = {
      {"win7/Microsoft-Windows-TerminalServices-RemoteConnectionManager%4Operational.evtx",
       {"-inc_slack", "-show_offsets"},
       "\n399550,261,2018-08-04, 05:37:01.520,113688,*,info,",
       ",2018-08-04 05:37:01.5208639"},
      {"damaged/no_crc32.evtx",
       {"-inc_slack", "-show_offsets"},
       "\n415,8198,2021-03-31, 23:48:07.706,29512,*,error,",
       ",hr=0x803F7001;"},
      {"damaged/zero_data_size_event.evtx",
       {"-inc_slack", "-show_offsets"},
       "\n3,6005,2019-07-24, 13:04:09.000,6176,*,info,",
       ",24,e3 07 07 00 03 00 18 00 0d 00 04 00 09 00 34 01 00 00 00 00 00 00 00 00,"},
      {"legacy/SysEvent.Evt",
       {},
       "\n4573,7035,2011-10-26, 07:48:00.000,info,WKS-WINXP32BIT,"
       "Google Update Service (gupdate),start,Service Control Manager,S-1-5-18,",
       "SysEvent.Evt"},
      {"legacy/SysEvent.Evt",
       {},
       "\n1253,40960,2011-07-24, 16:11:13.000,warn,WKS-WINXP32BIT,cifs/CONTROLLER,Kerberos,\"There "
       "are currently no logon servers available to service the logon request.; "
       "(0xc000005e)\",LSASRV,",
       "SysEvent.Evt"}};
  for (const auto& [log, options, starts, holds] : rows) {
    const std::string out = listing(log, options);
    const auto at = out.find(starts);
    ASSERT_NE(at, out.npos) << starts;
    const std::string line = out.substr(at + 1, out.find('\n', at + 1) - at - 1);
    EXPECT_NE(line.find(holds), line.npos) << line;
  }
}

}  // namespace
}  // namespace zanvik::testing
