// What the reader makes of a chunk's records, held against the walk of the folder.
//
// A record whose offset the reader gave is read. A living one that it did not give is lost, and
// gets the reason that the bytes show. Records behind the used part count as read when the reader's
// search of free space gives them.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "inspect/chunk_walk.h"

namespace zanvik {

// A record that a reader gave, and what it says of it.
struct given_record {
  std::uint64_t offset = 0;  // in the chunk
  bool bare = false;         // its template was not found
  bool part = false;         // its content broke off
  bool operator<(const given_record& other) const { return offset < other.offset; }
};

// What a reader gave of one chunk, by rising offsets. An offset may come twice, and may lie past
// the chunk's end, where a size leads the reader there.
struct given_records {
  std::vector<given_record> plain;  // by a walk over the declared records
  std::vector<given_record> slack;  // more, by the search of free space and behind damage
};

// Sets the kinds of the chunk's areas; a free record stays one until the whole log is known.
// Returns how many of the offsets are of no area of the walk.
std::uint64_t settle_chunk(walked_chunk& chunk, const given_records& given);

}  // namespace zanvik
