// Partitions of a disk by its boot records.
//
// In go the first bytes of a disk, as many as an event holds; they may as well be the boot sector
// of a volume, or begin before the boot record. Out come the partitions in the order of the
// tables, extended ones and what they hold included. Tables that are not within the bytes are
// passed over, a chain of them that bites its own tail ends there, and the work is in proportion
// to the bytes.
#pragma once

#include <cstddef>
#include <span>
#include <vector>

#include "disk/disk_boot_sector.h"

namespace zanvik {

// Sets `list` to the partitions found, each with what its boot sector says when that is within
// `bytes`. A first sector with a table makes the disk, of 512 bytes or of a power of two up to
// 16,384. `scan` asks for more: a boot sector of a FAT, NTFS or exFAT volume is one partition at
// 0, of type 0 when its file system is not known, and a table may stand in any later sector.
// Returns false, with `list` empty, when there is none.
bool parse_disk_layout(std::span<const std::byte> bytes, std::vector<partition_entry>& list,
                       bool scan);

}  // namespace zanvik
