// What the first sectors of a volume say of its file system.
//
// In goes a copy of them, as long as it is: 512 bytes do for most file systems, ext and HFS are
// only seen in 2,048. Out comes an entry with what was found; bytes of no file system known here
// are refused, and nothing that they say makes the reading leave them. An entry owns its texts.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>

namespace zanvik {

inline constexpr std::uint32_t sector_bytes = 512;

// One partition: what its table entry said, then what its boot sector says.
struct partition_entry {
  std::uint64_t lba_start = 0;    // sectors from the start of the disk
  std::uint64_t num_sectors = 0;  // as the table has it, else as the boot sector has it
  std::uint32_t type = 0;         // see disk_types.h
  std::uint32_t sectors_per_cluster = 0;
  std::uint32_t bytes_per_sector = sector_bytes;
  std::uint32_t vol_sig = 0;  // low 32 bits of the volume's serial number
  bool fs_known = false;
  std::string fs_name;
  std::string label_a;  // of an ext volume: its name
  std::string label_b;  // and where it was mounted last
};

// Fills `entry` from the boot sector at the start of `bytes`; what the file system does not say,
// and a count of sectors that is not 0, stay as they are. Returns false for fewer than 512 bytes,
// with `entry` unchanged, and for a file system that is not known, with at most
// `sectors_per_cluster` changed.
bool parse_boot_sector(partition_entry& entry, std::span<const std::byte> bytes);

}  // namespace zanvik
