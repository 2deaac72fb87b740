// Volume shadow copies for tests: writes their structures into an NTFS volume.
//
// In: the volume as it was at the time of each copy, oldest first, and as it is now; all of the same
// size, and with enough of it all zeros in each state, which is where the structures go. Out: the
// volume with its copies. A copy keeps the old contents of the blocks that changed until the next
// copy was made, as Windows does. The layout is that of the published description of the format
// ("Volume Shadow Snapshot format", the libyal project's documentation).
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace zanvik::testing {

// Blocks in which shadow copies are kept.
inline constexpr std::size_t shadow_block_bytes = 0x4000;

// Empty if there is no room for the structures.
std::string with_shadow_copies(const std::vector<std::string>& then, const std::string& now);

}  // namespace zanvik::testing
