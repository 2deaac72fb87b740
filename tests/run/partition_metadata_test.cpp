// Partition metadata in whole runs, by the built-in report and by command files, and the handling
// of a record whose values were made into text.
#include <gtest/gtest.h>

#include <map>
#include <string>
#include <vector>

#include "disk_bytes.h"
#include "event_builder.h"
#include "log_builder.h"
#include "program_run.h"

namespace zanvik::testing {
namespace {

constexpr const char* vbr_text =
    "vbr {sysid:ntfs or exfat;sector_size(bytes):512;cluster_size(bytes):4096;media:hard_disk;"
    "partition_size(bytes):512000;vol_sig:0012-abcd}";
constexpr const char* vbr_text_16 =
    "vbr {sysid:ntfs or exfat;sector_size(bytes):200;cluster_size(bytes):0x1000;media:hard_disk;"
    "partition_size(bytes):0x7d000;vol_sig:0012-abcd}";

// Signed 0012abcd, with partitions of type 7 at sectors 2,048 and 4,096.
byte_vector boot_record() {
  byte_vector bytes = disk_bytes(512, {{0, 0, 7, 2048, 2048}, {0, 1, 7, 4096, 2048}});
  set_u32(bytes, 440, 0x0012abcd);
  return bytes;
}

log_builder log_of_one() {
  event content{.event_id = 1006, .channel = "Microsoft-Windows-Partition/Diagnostic"};
  content.data = {{"DiskNumber", slot::uint32(3)},
                  {"Model", slot::utf16("Fabrikam Disk")},
                  {"Mbr", slot::binary(boot_record())},
                  {"Vbr0", slot::binary(ntfs_sector())},
                  {"Vbr1", slot::binary(byte_vector(512, std::byte{0x20}))},
                  {"Vbr2", slot::binary(bytes_of({1, 2}))},
                  {"Seen", slot::filetime(filetime(2024, 3, 9, 7, 5, 4))},
                  {"PartitionTable", slot::binary(byte_vector(48))}};
  return log_builder().chunk({record(1, content)});
}

// The output for the one record, by column. No value contains a tab.
std::map<std::string, std::string> cells_of(const program_run& run) {
  std::vector<std::vector<std::string>> lines;
  for (const std::string& line : lines_of(run.out)) {
    if (line.find('\t') != std::string::npos) lines.push_back(split(line, '\t'));
  }
  if (lines.size() != 2) return {{"not a head and a record", run.out + run.err}};
  std::map<std::string, std::string> cells;
  for (std::size_t i = 0; i < lines[1].size(); ++i) cells[lines[0].at(i)] = lines[1][i];
  return cells;
}

// Options, the line of a command file if any, and cells that must be present.
TEST(partition_metadata, in_whole_runs) {
  const std::string id = "!cmd, -enum_evtxlog, -id, 1006, -name, x, ";
  const std::string when = "!cmd, -enum_evtxlog, -conditions, ";
  const std::tuple<const char*, std::vector<std::string>, std::string,
                   std::map<std::string, std::string>>
      rows[] = {
          {"the report shows all that it decodes",
           {"-partition_metadata"},
           "",
           {{"name", "Partition Info"},
            {"DiskNumber", "3"},
            {"Mbr",
             "mbr {disk_sig:  12-abcd;vol1;byte offset:1048576;size:1048576;type:ntfs or exfat|"
             "vol2;byte offset:2097152;size:1048576;type:ntfs or exfat}"},
            {"Vbr0", vbr_text},
            {"Vbr1", "invalid data"},
            {"Vbr2", "01 02"},  // too short to be one
            {"Vbr3", ""},
            {"PartitionTable", "part_tbl {unk}"}}},
          {"in base 16", {"-partition_metadata", "-base16"}, "", {{"Vbr0", vbr_text_16}}},
          {"all data; a date as the run has it",
           {"-dateformat", "mm/dd/yyyy"},
           id + "-all_data, -translate, Vbr0!vbr|Seen!TF",
           {{"04:Vbr0", vbr_text}, {"07:Seen", "03/09/2024 07:05:04.000000000"}}},
          {"what is named is pulled along",
           {},
           id + "-pull, Model, -translate, Seen!tf",
           {{"Model", "Fabrikam Disk"}, {"Seen", "2024/03/09 07:05:04.000000000"}}},
          {"names are compared exactly, a pulled one in any case",
           {},
           id + "-pull, Model, -translate, vbr2!vbr|VBR1!vbr",
           {{"vbr2", "01 02"}}},
          {"from an offset on there is too little",
           {},
           id + "-pull, Vbr2, -translate, Vbr2!VBR#1",
           {{"Vbr2", "01 02"}}},
          {"conditions come first, so they see the bytes",
           {},
           when + "Vbr0|vbr {, -name, a, -pull, Vbr0, -translate, Vbr0!vbr\n" + when +
               "Vbr2|01 02, -name, b, -pull, Vbr0, -translate, Vbr0!vbr\n",
           {{"name", "b"}, {"Vbr0", vbr_text}}},
      };
  const scratch_dir scratch;
  log_of_one().write(scratch.path("p.evtx"));
  for (const auto& [reason, given, commands, expected] : rows) {
    std::vector<std::string> options = given;
    options.insert(options.end(),
                   {"-csv", "-csv_separator", "tab", "-quiet", "-log", scratch.path("p.evtx")});
    if (!commands.empty())
      options.insert(options.end(), {"-cmdfile", scratch.write("c", commands)});
    auto cells = cells_of(run_zanvik(options));
    for (const auto& [column, text] : expected) {
      ASSERT_TRUE(cells.contains(column)) << reason << ": " << column << cells.begin()->second;
      EXPECT_EQ(cells[column], text) << reason << ": " << column;
    }
  }
}

}  // namespace
}  // namespace zanvik::testing
