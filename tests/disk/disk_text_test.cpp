// Texts of binary values, worked out by hand from the layouts. Texts for file systems and tables
// made by Linux tools were the same.
#include "disk/disk_text.h"

#include <gtest/gtest.h>

#include <string>

#include "disk/disk_types.h"
#include "disk_bytes.h"

namespace zanvik::testing {
namespace {

enum class base { ten, sixteen };

struct outcome {
  bool done = false;
  std::string text;
};

outcome translated(translate_kind kind, const byte_vector& value, base in = base::ten,
                   std::uint16_t offset = 0) {
  translate_spec spec;
  spec.kind = kind;
  spec.decimal = in == base::ten;
  spec.offset = offset & 0x7fff;
  const byte_vector exact(value.begin(), value.end());  // nothing behind it
  outcome result{false, "must be cleared"};
  result.done = translate_value(spec, exact, result.text);
  return result;
}

byte_vector exfat_sector(std::uint8_t sector_shift, std::uint8_t cluster_shift) {
  byte_vector bytes(512);
  put_text(bytes, 3, "EXFAT   ");
  set_u64(bytes, 72, 3);
  set_u32(bytes, 100, 0xfedcba98);
  set_u8(bytes, 108, sector_shift);
  set_u8(bytes, 109, cluster_shift);
  return bytes;
}

// 98,304 sectors of 512 bytes.
byte_vector fat_sector(std::string_view name, std::uint8_t cluster_sectors, std::uint8_t media,
                       std::uint32_t serial) {
  const bool large = name == "FAT32";
  byte_vector bytes(512);
  put_text(bytes, 3, "mkfs.fat");
  set_u16(bytes, 11, 512);
  set_u8(bytes, 13, cluster_sectors);
  set_u8(bytes, 21, media);
  set_u32(bytes, 32, 98304);
  set_u32(bytes, large ? 67 : 39, serial);
  put_text(bytes, large ? 82 : 54, name);
  return bytes;
}

// A superblock of 24,576 blocks of 2,048 bytes, after a boot sector with or without code.
byte_vector ext_volume(bool code) {
  byte_vector bytes(2048);
  if (code) put_text(bytes, 0, "\xeb\x3cloader");
  set_u32(bytes, 1024 + 4, 24576);
  set_u32(bytes, 1024 + 24, 1);
  set_u16(bytes, 1024 + 56, 0xef53);
  set_u32(bytes, 1024 + 104, 0x0012abcd);
  return bytes;
}

byte_vector with_magic(std::size_t size, std::size_t at, std::uint16_t magic) {
  byte_vector bytes(size);
  set_u16(bytes, at, magic);
  return bytes;
}

byte_vector signed_disk(std::vector<table_row> rows) {
  byte_vector bytes = disk_bytes(512, rows);
  set_u32(bytes, 440, 0x0012abcd);
  return bytes;
}

struct layout_row {
  std::uint64_t number;
  std::uint64_t offset;
  std::uint64_t length;
  std::uint8_t type;
  std::uint32_t signature;
};

byte_vector mbr_layout(std::uint32_t count, const std::vector<layout_row>& rows) {
  byte_vector bytes(48 + 144 * rows.size());
  set_u32(bytes, 4, count);
  set_u32(bytes, 8, 0x0012abcd);
  std::size_t at = 48;
  for (const layout_row& row : rows) {
    set_u64(bytes, at + 8, row.offset);
    set_u64(bytes, at + 16, row.length);
    set_u64(bytes, at + 24, row.number);
    set_u8(bytes, at + 32, row.type);
    set_u32(bytes, at + 40, row.signature);
    at += 144;
  }
  return bytes;
}

byte_vector gpt_layout() {
  byte_vector bytes = mbr_layout(2, {{1, 0x100000, 0x200000, 0, 0}, {2, 1, 2, 0, 0}});
  const auto put_guid = [&](std::size_t at, std::string_view text) {
    const byte_vector guid = guid_bytes(text);
    std::copy(guid.begin(), guid.end(), bytes.begin() + static_cast<std::ptrdiff_t>(at));
  };
  put_guid(8, "6b29fc40-ca47-1067-b31d-00dd010662da");
  put_guid(48 + 48, "00112233-4455-6677-8899-aabbccddeeff");
  byte_vector name;
  append_utf16(name, "Daten ä");
  std::copy(name.begin(), name.end(), bytes.begin() + 48 + 72);
  return bytes;
}

TEST(translate_value, texts) {
  using enum translate_kind;
  const std::vector<layout_row> two = {{1, 1048576, 4096, 7, 0x0012abcd}, {10, 2, 3, 238, 0}};
  const byte_vector table = mbr_layout(2, two);
  byte_vector four = mbr_layout(5, {{1, 1, 1, 5, 0x0012abcd},
                                    {2, 0, 0, 5, 1},
                                    {3, 3, 3, 0, 0},
                                    {4, 4, 4, 4, 0},
                                    {5, 5, 5, 5, 0}});
  const std::tuple<const char*, translate_kind, base, byte_vector, std::string> rows[] = {
      {"a volume", vbr, base::ten, ntfs_sector(),
       "vbr {sysid:ntfs or exfat;sector_size(bytes):512;cluster_size(bytes):4096;"
       "media:hard_disk;partition_size(bytes):512000;vol_sig:0012-abcd}"},
      {"the sector size alone has no 0x", vbr, base::sixteen, ntfs_sector(),
       "vbr {sysid:ntfs or exfat;sector_size(bytes):200;cluster_size(bytes):0x1000;"
       "media:hard_disk;partition_size(bytes):0x7d000;vol_sig:0012-abcd}"},
      {"shifts, the larger bits of which do nothing", vbr, base::ten, exfat_sector(9 + 64, 31),
       "vbr {sysid:ntfs or exfat;sector_size(bytes):512;cluster_size(bytes):1099511627776;"
       "partition_size(bytes):1536;vol_sig:fedc-ba98}"},
      {"but the sixth makes nothing of all", vbr, base::ten, exfat_sector(32, 63),
       "vbr {sysid:ntfs or exfat;sector_size(bytes):0;cluster_size(bytes):0;"
       "partition_size(bytes):0;vol_sig:fedc-ba98}"},
      {"fat32", vbr, base::ten, fat_sector("FAT32", 1, 0xf8, 0x0012abcd),
       "vbr {sysid:fat32;sector_size(bytes):512;cluster_size(bytes):512;media:hard_disk;"
       "partition_size(bytes):50331648;vol_sig:0012-abcd}"},
      {"fat16", vbr, base::ten, fat_sector("FAT16", 4, 0xf0, 0xfedcba98),
       "vbr {sysid:fat16;sector_size(bytes):512;cluster_size(bytes):2048;media:removable;"
       "partition_size(bytes):50331648;vol_sig:fedc-ba98}"},
      {"fat12 is none", vbr, base::ten, fat_sector("FAT12", 64, 0xf8, 1), "invalid data"},
      {"ext under a boot loader: the count of sectors is one of bytes", vbr, base::ten,
       ext_volume(true),
       "vbr {sysid:linux;sector_size(bytes):512;cluster_size(bytes):2048;"
       "partition_size(bytes):25769803776;vol_sig:0012-abcd}"},
      {"ext alone has no sizes", vbr, base::ten, ext_volume(false),
       "vbr {sysid:linux;sector_size(bytes):512;cluster_size(bytes):0;"
       "partition_size(bytes):0;vol_sig:0000-0000}"},
      {"hfs", vbr, base::ten, with_magic(2048, 1024, 0x5848),
       "vbr {sysid:hfs;sector_size(bytes):512;cluster_size(bytes):0;"
       "partition_size(bytes):0;vol_sig:0000-0000}"},
      {"too little for ext", vbr, base::ten, with_magic(2047, 1080, 0xef53), "invalid data"},
      {"too little for all", vbr, base::ten, byte_vector(511), "no: "},
      {"blanks before the signature", mbr, base::ten,
       signed_disk({{0, 0, 6, 1, 8}, {0, 1, 7, 9, 1}}),
       "mbr {disk_sig:  12-abcd;vol1;byte offset:512;size:4096;type:fat|"
       "vol2;byte offset:4608;size:512;type:ntfs or exfat}"},
      {"no signature", mbr, base::sixteen, disk_bytes(512, {{0, 0, 36, 0xffffffff, 0xffffffff}}),
       "mbr {vol1;byte offset:0x1fffffffe00;size:0x1fffffffe00;type:unk}"},
      {"sectors of 4,096 are still told in 512", mbr, base::ten,
       disk_bytes(8192, {{0, 0, 6, 3, 1}}, 4096), "mbr {vol1;byte offset:1536;size:512;type:fat}"},
      {"no table", mbr, base::ten, byte_vector(512), "no: "},
      {"a signature leaves decimal numbers decimal", vtbl, base::ten, table,
       "part_tbl {vol1;byte_offset:1048576;num_bytes:4096;disk_sig:  12-abcd;"
       "vol_type:ntfs or exfat;vol10;byte_offset:2;num_bytes:3;vol_type:gpt}"},
      {"in hexadecimal a bare number takes the base of those before it", vtbl, base::sixteen, table,
       "part_tbl {vol1;byte_offset:0x100000;num_bytes:0x1000;disk_sig:  12-abcd;"
       "vol_type:ntfs or exfat;vola;byte_offset:0x2;num_bytes:0x3;vol_type:gpt}"},
      {"four are looked at, of no length is none", vtbl, base::ten, four,
       "part_tbl {vol1;byte_offset:1;num_bytes:1;disk_sig:  12-abcd;vol_type:exten;"
       "vol3;byte_offset:3;num_bytes:3;vol_type:empty;"
       "vol4;byte_offset:4;num_bytes:4;vol_type:fat16}"},
      {"by GUID", vtbl, base::sixteen, gpt_layout(),
       "part_tbl {disk_guid:6b29fc40-ca47-1067-b31d-00dd010662da;"
       "vol1;byte_offset:0x100000;num_bytes:0x200000;"
       "vol_guid:00112233-4455-6677-8899-aabbccddeeff;vol_type:Daten ä;"
       "vol2;byte_offset:0x1;num_bytes:0x2;"
       "vol_guid:00000000-0000-0000-0000-000000000000;vol_type:}"},
      {"empty: a text, and yet no", vtbl, base::ten, mbr_layout(0, {}), "no: part_tbl {unk}"},
      {"more than is there", vtbl, base::ten, mbr_layout(3, two), "no: "},
      {"far more", vtbl, base::ten, mbr_layout(0xffffffff, two), "no: "},
      {"no head", vtbl, base::ten, byte_vector(47), "no: "},
  };
  for (const auto& [reason, kind, in, value, expected] : rows) {
    const outcome result = translated(kind, value, in);
    EXPECT_EQ((result.done ? "" : "no: ") + result.text, expected) << reason;
  }
}

TEST(translate_value, bare_numbers_follow_the_base) {
  std::vector<table_row> rows = {{0, 0, 5, 1, 1}};
  for (std::uint32_t sector = 1; sector < 10; ++sector) rows.push_back({sector, 0, 5, sector, 1});
  const byte_vector disk = disk_bytes(5120, rows);
  EXPECT_NE(translated(translate_kind::mbr, disk, base::ten).text.find("|vol10;"),
            std::string::npos);
  EXPECT_NE(translated(translate_kind::mbr, disk, base::sixteen).text.find("|vola;"),
            std::string::npos);
}

TEST(translate_value, times_and_offsets) {
  byte_vector value;
  append_u8(value, 0x77);
  append_u64(value, filetime(2024, 3, 9, 7, 5, 4, 1234567));
  translate_spec spec;
  spec.offset = 1;
  std::string text;
  EXPECT_TRUE(translate_value(spec, value, text));
  EXPECT_EQ(text, "03/09/2024 07:05:04.123456700");
  spec.year_first = true;
  EXPECT_TRUE(translate_value(spec, value, text));
  EXPECT_EQ(text, "2024/03/09 07:05:04.123456700");
  constexpr std::uint16_t too_late[] = {2, 9, 10, 0x7fff};
  for (const std::uint16_t offset : too_late) {
    EXPECT_FALSE(translated(translate_kind::tf, value, base::ten, offset).done) << offset;
  }
  EXPECT_FALSE(translated(translate_kind::tf, byte_vector(8)).done) << "no time";
}

TEST(translate_value, cut_anywhere) {
  const std::pair<translate_kind, byte_vector> values[] = {
      {translate_kind::mbr, signed_disk({{0, 0, 5, 0, 8}})},
      {translate_kind::vbr, with_magic(2048, 1080, 0xef53)},
      {translate_kind::vtbl, gpt_layout()},
      {translate_kind::vtbl, byte_vector(700, std::byte{0xff})},
      {translate_kind::mbr, byte_vector(700, std::byte{0xff})}};
  for (const auto& [kind, value] : values) {
    for (std::size_t size = 0; size < value.size(); ++size) {
      const byte_vector cut(value.begin(), value.begin() + static_cast<std::ptrdiff_t>(size));
      const outcome result = translated(kind, cut);
      const bool unknown = kind == translate_kind::vbr && size >= 512;
      EXPECT_EQ(result.text, unknown ? "invalid data" : "") << size;
      EXPECT_EQ(result.done, unknown) << size;
    }
  }
}

TEST(partition_type_text, names) {
  EXPECT_EQ(partition_type_text(23), "hidden ntfs");
  EXPECT_EQ(partition_type_text(29), "unk");
  EXPECT_EQ(partition_type_text(0x8007), "ntfs or exfat [guess]");
  EXPECT_EQ(partition_type_text(0xffff), "unk [guess]");
  EXPECT_EQ(partition_type_text(0x0107), "unk") << "16 bits, not 8";
}

}  // namespace
}  // namespace zanvik::testing
