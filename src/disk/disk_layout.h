// Partitions of a disk by its boot records.
//
// In: the first bytes of a disk, as many as an event has; they may also be the boot sector of a
// volume, or begin before the boot record. Out: the partitions in the order of the tables,
// including extended ones and those inside them. Tables outside the bytes are skipped, a chain of
// them that leads back to itself ends there, and the work is in proportion to the bytes.
#pragma once

#include <cstddef>
#include <span>
#include <vector>

#include "disk/disk_boot_sector.h"

namespace zanvik {

// Sets `list` to the partitions found, each with the content of its boot sector if that is within
// `bytes`. A first sector with a table is the start of a disk, with sectors of 512 bytes or of a
// power of two up to 16,384. `scan` finds more: a boot sector of a FAT, NTFS or exFAT volume is one
// partition at 0, of type 0 if its file system is not known, and a table may be in any later
// sector. Returns false, with `list` empty, if there is none.
bool parse_disk_layout(std::span<const std::byte> bytes, std::vector<partition_entry>& list,
                       bool scan);

}  // namespace zanvik
