// What the first sectors of a volume say about its file system.
//
// In: a copy of them, of any length: 512 bytes are enough for most file systems, ext and HFS need
// 2,048. Out: an entry with what was found. Bytes of an unknown file system are refused, and no
// value in them leads outside them. An entry owns its texts.
// are refused, and nothing that they say makes the reading leave them. An entry owns its texts.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>

namespace zanvik {

inline constexpr std::uint32_t sector_bytes = 512;

// One partition: from its table entry, then from its boot sector.
struct partition_entry {
  std::uint64_t lba_start = 0;    // sectors from the start of the disk
  std::uint64_t num_sectors = 0;  // from the table, else from the boot sector
  std::uint32_t type = 0;         // see disk_types.h
  std::uint32_t sectors_per_cluster = 0;
  std::uint32_t bytes_per_sector = sector_bytes;
  std::uint32_t vol_sig = 0;  // low 32 bits of the volume's serial number
  bool fs_known = false;
  std::string fs_name;
  std::string label_a;  // of an ext volume: its name
  std::string label_b;  // and where it was mounted last
};

// Fills `entry` from the boot sector at the start of `bytes`. Fields that the file system does not
// have, and a count of sectors other than 0, are unchanged. Returns false for fewer than 512 bytes,
// with `entry` unchanged, and for an unknown file system, with at most `sectors_per_cluster`
// changed.
bool parse_boot_sector(partition_entry& entry, std::span<const std::byte> bytes);

}  // namespace zanvik
