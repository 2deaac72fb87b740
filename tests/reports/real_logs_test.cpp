// The built program over real logs: it shows as many records as the logs hold, and three records
// come out as their bytes say. Skipped where the folder of logs is not there.
//
// The cells of the three records were read off a hex dump before the program was ever run on them:
// record header, instance head, definition (its GUID and size give the slot table's place), each
// descriptor and each value, and the names from the definition's own bytes.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <filesystem>
#include <map>
#include <string>
#include <vector>

#include "../run/program_run.h"

namespace zanvik::testing {
namespace {

namespace fs = std::filesystem;

const fs::path logs_folder = ZANVIK_SOURCE_DIR "/../shared/logs";

#define SKIP_WITHOUT_LOGS()                                                       \
  if (!fs::exists(logs_folder)) {                                                 \
    GTEST_SKIP() << "the folder of real logs is not there, so nothing was tried"; \
  }

std::vector<std::string> split(std::string_view text, char at) {
  std::vector<std::string> parts;
  for (std::size_t from = 0; from <= text.size();) {
    const std::size_t to = std::min(text.find(at, from), text.size());
    parts.emplace_back(text.substr(from, to - from));
    from = to + 1;
  }
  return parts;
}

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
    row_cells row;
    for (std::size_t i = 0; i < std::min(cells.size(), header.size()); ++i) {
      row.emplace(header[i], cells[i]);
    }
    rows.push_back(std::move(row));
  }
  return rows;
}

std::vector<row_cells> listed(const fs::path& log) {
  const auto run = run_zanvik({"-log", log.string(), "-csv", "-quiet"});
  EXPECT_EQ(run.status, 0) << run.err;
  return rows_of(run.out);
}

// Counts as the folder's list of sources gives them: | `attack/openssh.evtx` | 7 |
std::map<std::string, std::size_t> stated_counts() {
  std::map<std::string, std::size_t> counts;
  for (const std::string& line : split(file_text((logs_folder / "SOURCES.md").string()), '\n')) {
    const auto cells = split(line, '|');
    if (cells.size() != 4 || cells[1].find(".evtx`") == std::string::npos) continue;
    std::string digits = cells[2];
    std::erase_if(digits, [](char c) { return c < '0' || c > '9'; });
    if (!digits.empty()) counts[cells[1].substr(2, cells[1].size() - 4)] = std::stoul(digits);
  }
  return counts;
}

template <typename T>
T number_at(const std::string& bytes, std::size_t at) {
  T value{};
  if (at + sizeof(T) <= bytes.size()) std::memcpy(&value, bytes.data() + at, sizeof(T));
  return value;
}

// Records that bear a number outside their chunk's declared range, counted from the headers alone.
std::size_t outside_their_range(const std::string& bytes) {
  std::size_t count = 0;
  for (std::size_t chunk = 4096; chunk + 65536 <= bytes.size(); chunk += 65536) {
    const auto first = number_at<std::uint64_t>(bytes, chunk + 24);
    const auto last = number_at<std::uint64_t>(bytes, chunk + 32);
    std::size_t record = chunk + 512;
    for (auto n = first; n <= last && bytes.compare(record, 4, "**\0\0", 4) == 0; ++n) {
      const auto number = number_at<std::uint64_t>(bytes, record + 8);
      if (number < first || number > last) ++count;
      record += number_at<std::uint32_t>(bytes, record + 4);
    }
  }
  return count;
}

TEST(real_logs, show_as_many_records_as_they_hold) {
  SKIP_WITHOUT_LOGS();
  const auto counts = stated_counts();
  ASSERT_EQ(counts.size(), 32u);
  for (const auto& [name, count] : counts) {
    const fs::path log = logs_folder / name;
    const bool terminal_services = name.find("TerminalServices") != std::string::npos;
    // Records outside the declared range are not shown; one log has some.
    const std::size_t hidden = outside_their_range(file_text(log.string()));
    EXPECT_EQ(hidden, terminal_services ? 98u : 0u) << name;
    EXPECT_EQ(listed(log).size(), count - hidden) << name;
  }
}

void expect_cells(const std::string& log, row_cells expected) {
  const fs::path path = logs_folder / log;
  const auto rows = listed(path);
  const auto found = std::find_if(rows.begin(), rows.end(), [&](const row_cells& row) {
    return row.at("Record#") == expected.at("Record#") &&
           row.at("EventID") == expected.at("EventID");
  });
  ASSERT_NE(found, rows.end()) << log;
  expected.emplace("event log", path.string());
  expected.emplace("Event xmlns", "http://schemas.microsoft.com/win/2004/08/events/event");
  EXPECT_EQ(*found, expected) << log;
}

// Instance at 0x218 of the chunk, definition resident at 0x226, 0x49c bytes of body, table of 18 at
// 0x6da; slot 17 has an instance at 0x7c3 with a resident body of 0x210, table of 8 at 0x9f9.
TEST(real_logs, a_security_record_shows_what_its_bytes_say) {
  SKIP_WITHOUT_LOGS();
  expect_cells("attack/password-change.security.evtx",
               {{"Record#", "1"},
                {"EventID", "4723"},
                {"Date", "2021-12-04"},  // 0x01d7e960f5afa0b3
                {" Time-UTC", " 22:47:47.877"},
                {"Level (translated)", "info"},
                {"Provider Name", "Microsoft-Windows-Security-Auditing"},
                {"01:TargetUserName", "hacker2"},
                {"02:TargetDomainName", "OFFSEC"},
                {"03:TargetSid", ""},  // five sub-authorities
                {"04:SubjectUserSid", ""},
                {"05:SubjectUserName", "admmig"},
                {"06:SubjectDomainName", "OFFSEC"},
                {"07:SubjectLogonId", "0x000000010e7c4430"},
                {"08:PrivilegeList", "-"},
                {"Channel", "Security"},
                {"Computer", "rootdc1.offsec.lan"},
                {"Correlation ActivityID", "d96638da-e4f9-0001-f038-66d9f9e4d701"},
                {"Correlation RelatedActivityID", "0"},  // null
                {"EventID Qualifiers", "0"},             // null
                {"EventRecordID", "233289145"},          // 0x0de7b5b9
                {"Execution ProcessID", "596"},
                {"Execution ThreadID", "3492"},
                {"Keywords", "0x8010000000000000"},
                {"Level", "0"},
                {"Opcode", "0"},
                {"Provider Guid", "54849625-5478-4994-a5ba-3e3b0328c30d"},
                {"Security UserID", "0"},  // null
                {"Task", "13824"},
                {"TimeCreated SystemTime", "2021-12-04 22:47:47.872773900"},
                {"Version", "0"}});
}

// Definition of 0x54d bytes at 0x226, with provider, channel and computer as literals; table of 20
// at 0x78b; slot 19, named UserData, has an instance at 0x822, 0x171 bytes of body, 4 values at
// 0x9b9, of which the last is empty.
TEST(real_logs, a_system_record_shows_what_its_bytes_say) {
  SKIP_WITHOUT_LOGS();
  expect_cells(
      "attack/service-install.evtx",
      {{"Record#", "1"},
       {"EventID", "104"},
       {"Date", "2021-04-21"},  // 0x01d736909c938d04
       {" Time-UTC", " 09:27:56.082"},
       {"Level (translated)", "info"},
       {"Provider Name", "Microsoft-Windows-Eventlog"},
       {"01:SubjectUserName", "admmig"},
       {"02:SubjectDomainName", "OFFSEC"},
       {"03:Channel", "System"},
       {"04:BackupPath", ""},
       {"Channel", "System"},
       {"Computer", "jump01.offsec.lan"},
       {"Correlation ActivityID", "0"},
       {"Correlation RelatedActivityID", "0"},
       {"EventID Qualifiers", "0"},
       {"EventRecordID", "471479"},  // 0x000731b7
       {"Execution ProcessID", "492"},
       {"Execution ThreadID", "12164"},
       {"Keywords", "0x8000000000000000"},
       {"Level", "4"},
       {"LogFileCleared xmlns", "http://manifests.microsoft.com/win/2004/08/windows/eventlog"},
       {"Opcode", "0"},
       {"Provider Guid", "{fc65ddd8-d6ef-4962-83d5-6e5cfe9ce148}"},
       {"Security UserID", ""},  // five sub-authorities
       {"Task", "104"},
       {"TimeCreated SystemTime", "2021-04-21 09:27:51.181798500"},
       {"UserData", ""},
       {"Version", "0"}});
}

// Definition of 0x4bd bytes at 0x226, table of 18 at 0x6fb, values from 0x747; slot 17 has an
// instance at 0x81a, 0x179 bytes of body, 4 texts at 0x9cd.
TEST(real_logs, a_record_with_user_data_shows_what_its_bytes_say) {
  SKIP_WITHOUT_LOGS();
  expect_cells("attack/printer-install-userdata.evtx",
               {{"Record#", "1"},
                {"EventID", "316"},
                {"Date", "2021-10-27"},  // 0x01d7cb1d6062baa1
                {" Time-UTC", " 10:28:26.229"},
                {"Level (translated)", "info"},
                {"Provider Name", "Microsoft-Windows-PrintService"},
                {"01:Param1", "Generic / Text Only"},
                {"02:Param2", "Windows x64"},
                {"03:Param3", "Version-3"},
                {"04:Param4",  // its commas become semicolons
                 "UNIDRV.DLL; UNIDRVUI.DLL; TTY.GPD; UNIDRV.HLP; TTYRES.DLL; TTY.INI; TTY.DLL; "
                 "TTYUI.DLL; TTYUI.HLP; UNIRES.DLL; STDNAMES.GPD; STDDTYPE.GDL; STDSCHEM.GDL; "
                 "STDSCHMX.GDL"},
                {"Channel", "Microsoft-Windows-PrintService/Operational"},
                {"Computer", "FS03.offsec.lan"},
                {"Correlation ActivityID", "0"},
                {"Correlation RelatedActivityID", "0"},
                {"DriverAdded xmlns",
                 "http://manifests.microsoft.com/win/2005/08/windows/printing/spooler/core/events"},
                {"EventID Qualifiers", "0"},
                {"EventRecordID", "1"},
                {"Execution ProcessID", "1048"},
                {"Execution ThreadID", "3836"},
                {"Keywords", "0x4000000000000900"},
                {"Level", "4"},
                {"Opcode", "11"},
                {"Provider Guid", "747ef6fd-e535-4d16-b510-42c90f6873a1"},
                {"Security UserID", "S-1-5-18"},
                {"Task", "8"},
                {"TimeCreated SystemTime", "2021-10-27 10:28:26.151083000"},
                {"UserData", ""},
                {"Version", "0"}});
}

}  // namespace
}  // namespace zanvik::testing
