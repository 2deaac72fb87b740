// What one chunk says about itself: its header against its bytes, its records one by one.
#pragma once

#include <cstddef>
#include <span>

#include "inspect/chunk_walk.h"
#include "inspect/record_sequence.h"

namespace zanvik {

// Adds the findings of a chunk that was walked and settled, and fills its summary, whose index and
// offset are set. Nothing is found in an empty chunk.
void find_in_chunk(std::span<const std::byte> bytes, const walked_chunk& chunk,
                   chunk_summary& summary, finding_list& findings);

}  // namespace zanvik
