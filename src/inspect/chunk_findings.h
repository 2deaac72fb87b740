// What one chunk says about itself: its header compared with its bytes, and its records one by one.
#pragma once

#include <cstddef>
#include <span>

#include "inspect/chunk_walk.h"
#include "inspect/record_sequence.h"

namespace zanvik {

// Adds the findings of a chunk that was walked and settled, and fills its summary, whose index and
// offset are set. An empty chunk has no findings.
void find_in_chunk(std::span<const std::byte> bytes, const walked_chunk& chunk,
                   chunk_summary& summary, finding_list& findings);

}  // namespace zanvik
