// Whole runs of reports: what each one finds in the samples. A record is identified by its event ID
// and the report's caption.
#include <gtest/gtest.h>

#include <filesystem>
#include <map>
#include <string>
#include <vector>

#include "event_builder.h"
#include "log_builder.h"
#include "program_run.h"

namespace zanvik::testing {
namespace {

const std::filesystem::path source_dir = ZANVIK_SOURCE_DIR;

using captions = std::map<std::string, int>;  // "4723 caption" and how often

// Columns 2 and 6 of the rows of a CSV run; the columns before them contain no comma.
captions captions_of(const std::string& out) {
  captions found;
  for (const std::string& line : lines_of(out)) {
    if (line.empty() || line[0] < '0' || line[0] > '9') continue;
    const auto cells = split(line, ',');
    if (cells.size() >= 6) ++found[cells[1] + " " + cells[5]];
  }
  return found;
}

captions run_report(const std::filesystem::path& log, std::vector<std::string> options) {
  options.insert(options.end(), {"-csv", "-quiet", "-log", log.string()});
  const program_run run = run_zanvik(options, {.input = {}, .folder = source_dir.string()});
  EXPECT_EQ(run.status, 0) << run.err;
  return captions_of(run.out);
}

struct report_row {
  const char* log;
  std::vector<std::string> options;
  captions expected;
};

void expect_rows(const std::filesystem::path& folder, const std::vector<report_row>& rows) {
  for (const report_row& row : rows) {
    EXPECT_EQ(run_report(folder / row.log, row.options), row.expected)
        << row.log << " " << row.options.front();
  }
}

// The counts are those of the calls that make the samples.
TEST(reports, of_the_samples) {
  expect_rows(
      source_dir / "samples",
      {{"security.evtx",
        {"-pw"},
        {{"4723 Attempt was made to change an account's password", 2},
         {"4724 Attempt was made to reset an account's password", 3}}},
       {"security.evtx", {"-time"}, {{"4616 The System Time was Changed", 1}}},
       {"security.evtx", {"-creds"}, {{"4672 Special Privileges assigned to new logon", 4}}},
       {"security.evtx",
        {"-logon", "-start_time", "03/09/2024", "-stop_time", "03/10/2024"},
        {{"4625 logon/failed", 11},
         {"4624 logon/RemoteInteractive", 1},
         {"4648 logon/RunAs", 1},
         {"4634 logoff", 1}}},
       {"security.evtx", {"-pw", "-eventid", "1", "-string", "mira"}, {}},
       {"security.evtx", {"-startstop"}, {}},
       {"system.evtx", {"-usb"}, {}},
       {"odd.evtx", {"-logon"}, {}},
       {"security.evtx",
        {"-cmdfile", "examples/failed-logons.cmd"},
        {{"4625 failed logon", 12}, {"4624 desktop logon", 2}, {"4648 run as", 2}}},
       {"security.evtx",
        {"-cmdfile", "examples/one-user.cmd", "-start_time", "03/09/2024"},
        {{"4624 logon", 1},
         {"4616 clock change", 1},
         {"4724 password reset", 1},
         {"4625 anything else in march", 6},
         {"4634 anything else in march", 1},
         {"4648 anything else in march", 1},
         {"4672 anything else in march", 1}}},
       {"system.evtx",
        {"-cmdfile", "examples/system-changes.cmd"},
        {{"7 error", 1}, {"13 shutdown", 2}, {"1074 restart asked for", 2}}}});
}

// Channels without a sample: drivers, devices, partitions.
TEST(reports, of_channels_by_their_first_record) {
  const scratch_dir scratch;
  const auto log = [&](const char* name, const char* channel, std::uint32_t id, const char* field) {
    const event made{.event_id = id,
                     .channel = channel,
                     .data = {{field, slot::utf16("USB\\VID_1")}, {"Mbr", slot::null()}}};
    log_builder().chunk({record(1, made)}).write(scratch.path(name));
    return scratch.path(name);
  };
  const std::string drivers =
      log("a.evtx", "Microsoft-Windows-DriverFrameworks-UserMode/Operational", 2003, "x");
  const std::string devices =
      log("b.evtx", "Microsoft-Windows-Kernel-PnP/Configuration", 410, "DeviceInstanceId");
  const std::string partition =
      log("c.evtx", "Microsoft-Windows-Partition/Diagnostic", 1006, "DiskNumber");
  EXPECT_EQ(run_report(drivers, {"-usb"}), (captions{{"2003 Query to load Drivers", 1}}));
  EXPECT_EQ(run_report(devices, {"-usb"}), (captions{{"410 USB device was started", 1}}));
  EXPECT_EQ(run_report(partition, {"-usb"}), captions());
  EXPECT_EQ(run_report(partition, {"-partition_metadata"}), (captions{{"1006 Partition Info", 1}}));
}

TEST(reports, come_in_their_own_order) {
  const std::string log = "samples/security.evtx";
  const auto out = [&](const std::vector<std::string>& reports) {
    std::vector<std::string> args = reports;
    args.insert(args.end(), {"-csv", "-quiet", "-log", log});
    const std::string all = run_zanvik(args, {.input = {}, .folder = source_dir.string()}).out;
    return all.substr(all.find('\n'));  // without the command line
  };
  const std::string both = out({"-logon", "-pw"});
  EXPECT_EQ(both, out({"-pw", "-logon"}));
  EXPECT_LT(both.find("to reset"), both.find("logon/"));
}

}  // namespace
}  // namespace zanvik::testing
