// Partitions by boot records: the result of tables and their chains; wrong tables must not make the
// walk leave the bytes or run forever.
#include "disk/disk_layout.h"

#include <gtest/gtest.h>

#include <string>

#include "disk_bytes.h"

namespace zanvik::testing {
namespace {

// "type@start+count" of each partition, with a blank between.
std::string found(const byte_vector& bytes, bool scan = true) {
  const byte_vector exact(bytes.begin(), bytes.end());  // nothing behind it
  std::vector<partition_entry> list(1);                 // must be cleared
  if (parse_disk_layout(exact, list, scan) == list.empty()) return "contradicts itself";
  std::string text;
  for (const partition_entry& entry : list) {
    if (!text.empty()) text += ' ';
    text += std::to_string(entry.type) + '@' + std::to_string(entry.lba_start) + '+' +
            std::to_string(entry.num_sectors);
  }
  return text;
}

byte_vector with_sector(byte_vector bytes, std::size_t at, const byte_vector& sector) {
  std::copy(sector.begin(), sector.end(), bytes.begin() + static_cast<std::ptrdiff_t>(at));
  return bytes;
}

byte_vector fat12_sector() {
  byte_vector bytes = disk_bytes(512, {{0, 0, 6, 1, 1}});
  put_text(bytes, 3, "MSDOS5.0");
  put_text(bytes, 54, "FAT12   ");
  return bytes;
}

TEST(parse_disk_layout, finds_partitions) {
  const byte_vector second_is_table =
      with_sector(byte_vector(4096), 512 * 5, disk_bytes(512, {{0, 0, 6, 2, 9}, {0, 1, 5, 2, 9}}));
  byte_vector torn = with_sector(disk_bytes(1024, {{0, 0, 6, 1, 5}}), 512, ntfs_sector());
  torn.pop_back();
  const std::tuple<const char*, byte_vector, const char*> rows[] = {
      {"four",
       disk_bytes(512, {{0, 0, 1, 1, 1}, {0, 1, 4, 2, 1}, {0, 2, 7, 3, 1}, {0, 3, 131, 4, 1}}),
       "1@1+1 4@2+1 7@3+1 131@4+1"},
      {"an unknown type ends a table",
       disk_bytes(512, {{0, 0, 6, 1, 1}, {0, 1, 3, 2, 1}, {0, 2, 7, 3, 1}}), "6@1+1"},
      {"no sectors end it", disk_bytes(512, {{0, 0, 6, 1, 1}, {0, 1, 7, 2, 0}, {0, 2, 7, 3, 1}}),
       "6@1+1"},
      {"a protective table", disk_bytes(512, {{0, 0, 238, 1, 0xffffffff}}), ""},
      {"no signature", byte_vector(2048), ""},
      {"too short", byte_vector(511), ""},
      {"nothing", {}, ""},
      {"large sectors, and the boot sector is where they say",
       with_sector(disk_bytes(8192, {{0, 0, 6, 1, 1}}, 4096), 4096, ntfs_sector()), "7@1+1"},
      {"the largest", disk_bytes(32768, {{0, 0, 6, 1, 1}}, 16384), "6@1+1"},
      {"large sectors need bytes behind the first", disk_bytes(4096, {{0, 0, 6, 1, 1}}, 4096), ""},
      {"a boot sector decides on the type, the table on the size",
       with_sector(disk_bytes(1024, {{0, 0, 6, 1, 5}}), 512, ntfs_sector()), "7@1+5"},
      {"but not when a part of it is missing", torn, "6@1+5"},
      {"a boot sector in place of a table", ntfs_sector(), "7@0+1000"},
      {"one that is not known, signed or not, whatever it has for a table", fat12_sector(),
       "0@0+0"},
      {"a table in a later sector counts from there, as one of a chain", second_is_table,
       "6@7+9 5@7+9"},
      {"an extended partition at 0 ends it", disk_bytes(1024, {{0, 0, 5, 0, 9}}), "5@0+9"},
      {"links count from the first extended table, partitions from their own",
       disk_bytes(4096, {{0, 0, 15, 2, 9}, {2, 0, 6, 1, 1}, {2, 1, 5, 3, 4}, {5, 0, 7, 1, 1}}),
       "15@2+9 6@3+1 5@5+4 7@6+1"},
      {"what follows the link in its table is not read",
       disk_bytes(4096, {{0, 0, 5, 2, 9}, {0, 1, 7, 1, 1}}), "5@2+9"},
  };
  for (const auto& [reason, bytes, expected] : rows) EXPECT_EQ(found(bytes), expected) << reason;
  EXPECT_EQ(found(second_is_table, false), "") << "not searched for";
  EXPECT_EQ(found(ntfs_sector(), false), "") << "no table";
}

TEST(parse_disk_layout, chains_end) {
  struct row {
    const char* reason;
    std::vector<table_row> rows;
    const char* expected;
  };
  const row rows[] = {
      {"a table that names itself, at no distance",
       {{0, 0, 5, 2, 1}, {2, 0, 5, 0, 1}},
       "5@2+1 5@2+1"},
      {"two that name one another",
       {{0, 0, 5, 2, 1}, {2, 0, 5, 1, 1}, {3, 0, 5, 0, 1}},
       "5@2+1 5@3+1 5@3+1"},
      {"far outside", {{0, 0, 5, 0xffffffff, 0xffffffff}}, "5@4294967295+4294967295"},
      {"a sector that is below the size in bytes, and not there", {{0, 0, 5, 4095, 1}}, "5@4095+1"},
      {"a link far outside",
       {{0, 0, 5, 7, 1}, {7, 0, 5, 0xffffffff, 0xffffffff}},
       "5@7+1 5@4294967302+4294967295"},
  };
  for (const row& r : rows) EXPECT_EQ(found(disk_bytes(4096, r.rows)), r.expected) << r.reason;
}

// Every sector is a table of three partitions and a link, in one circle.
TEST(parse_disk_layout, each_table_is_read_once) {
  constexpr std::size_t sectors = 127;
  std::vector<table_row> rows = {{0, 0, 5, 1, 1}};
  for (std::uint32_t sector = 1; sector < sectors; ++sector) {
    for (std::size_t i = 0; i < 3; ++i) rows.push_back({sector, i, 6, 1, 1});
    rows.push_back({sector, 3, 5, sector == sectors - 1 ? 0 : sector, 1});
  }
  std::vector<partition_entry> list;
  ASSERT_TRUE(parse_disk_layout(disk_bytes(sectors * 512, rows), list, true));
  EXPECT_EQ(list.size(), 1 + 4 * (sectors - 1));
}

TEST(parse_disk_layout, cut_anywhere) {
  const byte_vector whole = with_sector(
      disk_bytes(4096, {{0, 0, 15, 2, 9}, {2, 0, 6, 1, 1}, {2, 1, 5, 3, 4}, {5, 0, 7, 1, 1}}),
      3 * 512, ntfs_sector());
  ASSERT_EQ(found(whole), "15@2+9 7@3+1 5@5+4 7@6+1");
  std::string before;
  for (std::size_t size = 0; size <= whole.size(); ++size) {
    const byte_vector cut(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(size));
    const std::string now = found(cut);
    EXPECT_GE(now.size(), before.size()) << size << ": more bytes show less";
    before = now;
  }
}

}  // namespace
}  // namespace zanvik::testing
