// Compares the records that the reader found in a chunk with the walk of this folder.
//
// A record at an offset that the reader returned is read. A live one that it did not return is
// lost, for the reason that the bytes show. Records after the used part count as read if the
// reader's search of free space returns them.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "inspect/chunk_walk.h"

namespace zanvik {

// A record that a reader returned, and its properties.
struct given_record {
  std::uint64_t offset = 0;  // in the chunk
  bool bare = false;         // its template was not found
  bool part = false;         // its content broke off
  bool operator<(const given_record& other) const { return offset < other.offset; }
};

// The records that a reader returned from one chunk, by ascending offsets. An offset may be
// repeated, and may be past the chunk's end if a size leads the reader there.
struct given_records {
  std::vector<given_record> plain;  // by a walk over the declared records
  std::vector<given_record> slack;  // more, by the search of free space and behind damage
};

// Sets the kinds of the chunk's areas; a free record stays free until the whole log is known.
// Returns how many of the offsets are in no area of the walk.
std::uint64_t settle_chunk(walked_chunk& chunk, const given_records& given);

}  // namespace zanvik
