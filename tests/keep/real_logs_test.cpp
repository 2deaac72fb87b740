// The built program over real logs: it shows as many records as the logs hold, and three records
// come out as their bytes say. Skipped where the folder of logs is not there.
//
// The cells of the three records were read off a hex dump before the program was ever run on them:
// record header, instance head, definition (its GUID and size give the slot table's place), each
// descriptor and each value, and the names from the definition's own bytes.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <map>

#include "../run/program_run.h"

namespace zanvik::testing {
namespace {

namespace fs = std::filesystem;

const fs::path logs_folder = ZANVIK_SOURCE_DIR "/../shared/logs";

class real_logs : public ::testing::Test {
 protected:
  void SetUp() override {
    if (!fs::exists(logs_folder)) GTEST_SKIP() << "no folder of real logs, so nothing was tried";
  }
};

using row_cells = std::map<std::string, std::string>;

// Rows of all tables, each cell under its column; tables stand behind blank lines.
std::vector<row_cells> rows_of(const std::string& csv) {
  std::vector<row_cells> rows;
  std::vector<std::string> header;
  for (const std::string& line : split(csv, '\n')) {
    if (line.empty() || line.starts_with("\"cmdline:")) {
      header.clear();
      continue;
    }
    const auto cells = split(line, ',');
    if (header.empty()) {
      header = cells;
      EXPECT_EQ(header.front(), "Record#") << line;
      continue;
    }
    EXPECT_EQ(cells.size(), header.size()) << line;
    row_cells& row = rows.emplace_back();
    for (std::size_t i = 0; i < std::min(cells.size(), header.size()); ++i)
      row[header[i]] = cells[i];
  }
  return rows;
}

std::vector<row_cells> listed(const fs::path& log, const std::string& statistics) {
  const auto run = run_zanvik({"-log", log.string(), "-csv", "-quiet", "-stats", statistics});
  EXPECT_EQ(run.status, 0) << run.err;
  return rows_of(run.out);
}

// Counts as the folder's list of sources gives them: | `attack/openssh.evtx` | 7 |
TEST_F(real_logs, show_as_many_records_as_they_hold) {
  const scratch_dir scratch;
  std::size_t logs = 0;
  for (const std::string& line : split(file_text((logs_folder / "SOURCES.md").string()), '\n')) {
    const auto cells = split(line, '|');
    if (cells.size() != 4 || !cells[1].starts_with(" `")) continue;
    std::string digits = cells[2];
    std::erase_if(digits, [](char c) { return c < '0' || c > '9'; });
    if (digits.empty()) continue;
    const std::string name = cells[1].substr(2, cells[1].size() - 4);
    // Records outside the declared range are counted and not shown; one log has some.
    const std::size_t hidden = name.find("TerminalServices") == std::string::npos ? 0 : 98;
    const auto rows = listed(logs_folder / name, scratch.path("stats"));
    EXPECT_EQ(rows.size(), std::stoul(digits) - hidden) << name;
    const std::string statistics = file_text(scratch.path("stats"));
    const auto total = statistics.find("\n     all | ");
    ASSERT_NE(total, std::string::npos) << name;
    EXPECT_EQ(std::stoul(statistics.substr(total + 12)), std::stoul(digits)) << name;
    ++logs;
  }
  EXPECT_EQ(logs, 33u);
}

// `cells` as "column=cell\n"; those that are the same for all need not be told.
void expect_first_record(const std::string& log, const std::string& cells) {
  const scratch_dir scratch;
  const std::string path = (logs_folder / log).string();
  row_cells expected{{"Record#", "1"},
                     {"event log", path},
                     {"Event xmlns", "http://schemas.microsoft.com/win/2004/08/events/event"},
                     {"Correlation RelatedActivityID", "0"},  // null
                     {"EventID Qualifiers", "0"},             // null
                     {"Level (translated)", "info"},
                     {"Version", "0"}};
  for (const std::string& cell : split(cells, '\n')) {
    expected[cell.substr(0, cell.find('='))] = cell.substr(cell.find('=') + 1);
  }
  const auto rows = listed(path, scratch.path("stats"));
  const auto found = std::find_if(rows.begin(), rows.end(), [&](const row_cells& row) {
    return row.at("Record#") == "1" && row.at("EventID") == expected["EventID"];
  });
  ASSERT_NE(found, rows.end()) << log;
  EXPECT_EQ(*found, expected) << log;
}

// Instance at 0x218 of the chunk, definition resident at 0x226, 0x49c bytes of body, table of 18 at
// 0x6da; slot 17 has an instance at 0x7c3 with a resident body of 0x210, table of 8 at 0x9f9. Time
// 0x01d7e960f5afa0b3; both SIDs have five sub-authorities.
TEST_F(real_logs, a_security_record_shows_what_its_bytes_say) {
  expect_first_record("attack/password-change.security.evtx", R"(EventID=4723
Date=2021-12-04
 Time-UTC= 22:47:47.877
Provider Name=Microsoft-Windows-Security-Auditing
01:TargetUserName=hacker2
02:TargetDomainName=OFFSEC
03:TargetSid=
04:SubjectUserSid=
05:SubjectUserName=admmig
06:SubjectDomainName=OFFSEC
07:SubjectLogonId=0x000000010e7c4430
08:PrivilegeList=-
Channel=Security
Computer=rootdc1.offsec.lan
Correlation ActivityID=d96638da-e4f9-0001-f038-66d9f9e4d701
EventRecordID=233289145
Execution ProcessID=596
Execution ThreadID=3492
Keywords=0x8010000000000000
Level=0
Opcode=0
Provider Guid=54849625-5478-4994-a5ba-3e3b0328c30d
Security UserID=0
Task=13824
TimeCreated SystemTime=2021-12-04 22:47:47.872773900)");
}

// Definition of 0x54d bytes at 0x226, with provider, channel and computer as literals; table of 20
// at 0x78b; slot 19, named UserData, has an instance at 0x822, 0x171 bytes of body, 4 values at
// 0x9b9, of which the last is empty. Time 0x01d736909c938d04; a SID of five sub-authorities.
TEST_F(real_logs, a_system_record_shows_what_its_bytes_say) {
  expect_first_record("attack/service-install.evtx", R"(EventID=104
Date=2021-04-21
 Time-UTC= 09:27:56.082
Provider Name=Microsoft-Windows-Eventlog
01:SubjectUserName=admmig
02:SubjectDomainName=OFFSEC
03:Channel=System
04:BackupPath=
Channel=System
Computer=jump01.offsec.lan
Correlation ActivityID=0
EventRecordID=471479
Execution ProcessID=492
Execution ThreadID=12164
Keywords=0x8000000000000000
Level=4
LogFileCleared xmlns=http://manifests.microsoft.com/win/2004/08/windows/eventlog
Opcode=0
Provider Guid={fc65ddd8-d6ef-4962-83d5-6e5cfe9ce148}
Security UserID=
Task=104
TimeCreated SystemTime=2021-04-21 09:27:51.181798500
UserData=)");
}

// Definition of 0x4bd bytes at 0x226, table of 18 at 0x6fb, values from 0x747; slot 17 has an
// instance at 0x81a, 0x179 bytes of body, 4 texts at 0x9cd, in which commas become semicolons. Time
// 0x01d7cb1d6062baa1.
TEST_F(real_logs, a_record_with_user_data_shows_what_its_bytes_say) {
  expect_first_record("attack/printer-install-userdata.evtx", R"(EventID=316
Date=2021-10-27
 Time-UTC= 10:28:26.229
Provider Name=Microsoft-Windows-PrintService
01:Param1=Generic / Text Only
02:Param2=Windows x64
03:Param3=Version-3
04:Param4=UNIDRV.DLL; UNIDRVUI.DLL; TTY.GPD; UNIDRV.HLP; TTYRES.DLL; TTY.INI; TTY.DLL; TTYUI.DLL; TTYUI.HLP; UNIRES.DLL; STDNAMES.GPD; STDDTYPE.GDL; STDSCHEM.GDL; STDSCHMX.GDL
Channel=Microsoft-Windows-PrintService/Operational
Computer=FS03.offsec.lan
Correlation ActivityID=0
DriverAdded xmlns=http://manifests.microsoft.com/win/2005/08/windows/printing/spooler/core/events
EventRecordID=1
Execution ProcessID=1048
Execution ThreadID=3836
Keywords=0x4000000000000900
Level=4
Opcode=11
Provider Guid=747ef6fd-e535-4d16-b510-42c90f6873a1
Security UserID=S-1-5-18
Task=8
TimeCreated SystemTime=2021-10-27 10:28:26.151083000
UserData=)");
}

}  // namespace
}  // namespace zanvik::testing
