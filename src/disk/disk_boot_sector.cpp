#include "disk/disk_boot_sector.h"

#include <string_view>

#include "base/byte_cursor.h"

namespace zanvik {
namespace {

// Types that stand for the file systems of boot sectors.
constexpr std::uint32_t type_fat16 = 4;
constexpr std::uint32_t type_ntfs_or_exfat = 7;
constexpr std::uint32_t type_fat32 = 12;
constexpr std::uint32_t type_linux = 131;
constexpr std::uint32_t type_hfs = 175;

// An ext superblock and an HFS volume header follow the first two sectors.
constexpr std::size_t superblock_at = 1024;
constexpr std::size_t with_superblock_bytes = 2048;
constexpr std::uint16_t ext_magic = 0xef53;
constexpr std::uint16_t hfs_plus_magic = 0x2b48;
constexpr std::uint16_t hfsx_magic = 0x5848;

std::string_view text_at(const byte_cursor& in, std::size_t offset, std::size_t size) {
  const auto bytes = in.bytes_at(offset, size);
  return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

std::string text_up_to_nul(const byte_cursor& in, std::size_t offset, std::size_t size) {
  const std::string_view text = text_at(in, offset, size);
  return std::string(text.substr(0, text.find('\0')));
}

// Meant: the low 5 bits are the count, a sixth makes everything 0, higher ones do nothing.
std::uint32_t shifted(std::uint32_t value, std::uint32_t count) {
  return (count & 0x20) != 0 ? 0 : value << (count & 0x1f);
}

void set_file_system(partition_entry& entry, std::uint32_t type, std::string_view name) {
  entry.type = type;
  entry.fs_name = name;
  entry.fs_known = true;
}

void set_sector_count(partition_entry& entry, std::uint64_t count) {
  if (entry.num_sectors == 0) entry.num_sectors = count;
}

// The takers read a boot sector at these places, in bytes, as its file system has them:
//   all       name 3, of FAT32 at 82, of FAT16 at 54
//   exFAT     count of sectors 72, serial number 100, and as powers of two bytes a sector 108,
//             sectors a cluster 109
//   NTFS      bytes a sector 11, sectors a cluster 13, count of sectors 40, serial number 72
//   FAT       bytes a sector 11, sectors a cluster 13, count of sectors 32, serial number 67 for
//             FAT32, 39 for FAT16
//   ext       in the superblock: count of blocks 4, block size as a power of two 24, magic 56,
//             serial number 104, name 120, place of the last mount 136

void take_exfat(partition_entry& entry, const byte_cursor& in) {
  set_file_system(entry, type_ntfs_or_exfat, "exfat");
  entry.bytes_per_sector = shifted(1, in.at_or_zero<std::uint8_t>(108));
  entry.sectors_per_cluster = shifted(1, in.at_or_zero<std::uint8_t>(109));
  entry.vol_sig = in.at_or_zero<std::uint32_t>(100);
  set_sector_count(entry, in.at_or_zero<std::uint64_t>(72));
}

void take_ntfs(partition_entry& entry, const byte_cursor& in, std::string_view name) {
  set_file_system(entry, type_ntfs_or_exfat, name);
  entry.bytes_per_sector = in.at_or_zero<std::uint16_t>(11);
  entry.sectors_per_cluster = in.at_or_zero<std::uint8_t>(13);
  entry.vol_sig = in.at_or_zero<std::uint32_t>(72);
  set_sector_count(entry, in.at_or_zero<std::uint64_t>(40));
}

void take_fat(partition_entry& entry, const byte_cursor& in, std::uint32_t type,
              std::string_view name, std::size_t serial_at) {
  set_file_system(entry, type, name);
  entry.bytes_per_sector = in.at_or_zero<std::uint16_t>(11);
  entry.sectors_per_cluster = in.at_or_zero<std::uint8_t>(13);
  entry.vol_sig = in.at_or_zero<std::uint32_t>(serial_at);
  set_sector_count(entry, in.at_or_zero<std::uint32_t>(32));
}

bool has_superblock(const byte_cursor& in, std::size_t magic_at, std::uint16_t magic) {
  return in.size() >= with_superblock_bytes && in.at_or_zero<std::uint16_t>(magic_at) == magic;
}

bool has_ext_superblock(const byte_cursor& in) {
  return has_superblock(in, superblock_at + 56, ext_magic);
}

// Below a boot sector with code in it. Meant: the count of sectors is in bytes.
void take_ext_behind_code(partition_entry& entry, const byte_cursor& in) {
  set_file_system(entry, type_linux, "ext2/3");
  const auto log_size = in.at_or_zero<std::uint32_t>(superblock_at + 24);
  const std::uint32_t block_bytes = log_size == 0 ? 1024 : shifted(1024, log_size);
  entry.bytes_per_sector = sector_bytes;
  entry.sectors_per_cluster = block_bytes / sector_bytes;
  entry.vol_sig = in.at_or_zero<std::uint32_t>(superblock_at + 104);
  set_sector_count(entry,
                   std::uint64_t{block_bytes} * in.at_or_zero<std::uint32_t>(superblock_at + 4));
}

// Below an empty boot sector. Meant: of an ext volume only the texts are used, no sizes.
bool take_behind_nothing(partition_entry& entry, const byte_cursor& in) {
  if (has_ext_superblock(in)) {
    set_file_system(entry, type_linux, "ext");
    entry.label_a = text_up_to_nul(in, superblock_at + 120, 16);
    entry.label_b = text_up_to_nul(in, superblock_at + 136, 64);
    return true;
  }
  const bool plus = has_superblock(in, superblock_at, hfs_plus_magic);
  if (!plus && !has_superblock(in, superblock_at, hfsx_magic)) return false;
  set_file_system(entry, type_hfs, plus ? "hfs+" : "hfsx");
  return true;
}

bool take_named(partition_entry& entry, const byte_cursor& in, std::string_view name) {
  if (name == "EXFAT   ") {
    take_exfat(entry, in);
  } else if (name == "NTFS    ") {
    take_ntfs(entry, in, "ntfs");
  } else if (name == "-FVE-FS-") {
    take_ntfs(entry, in, "bitlocker container");
  } else if (text_at(in, 82, 5) == "FAT32") {
    take_fat(entry, in, type_fat32, "fat32", 67);
  } else if (text_at(in, 54, 5) == "FAT16") {
    take_fat(entry, in, type_fat16, "fat16", 39);
  } else if (has_ext_superblock(in)) {
    take_ext_behind_code(entry, in);
  } else {
    return false;
  }
  return true;
}

}  // namespace

bool parse_boot_sector(partition_entry& entry, std::span<const std::byte> bytes) {
  const byte_cursor in(bytes);
  if (in.size() < sector_bytes) return false;
  const auto cluster_sectors = in.at_or_zero<std::uint8_t>(13);
  if (cluster_sectors != 0) entry.sectors_per_cluster = cluster_sectors;
  if (in.at_or_zero<std::uint64_t>(3) == 0) return take_behind_nothing(entry, in);
  return take_named(entry, in, text_at(in, 3, 8));
}

}  // namespace zanvik
