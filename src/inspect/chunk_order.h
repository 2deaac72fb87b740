// What the chunks of a log say together: gaps and repetitions between them, chunks in a wrong
// order, wiped ones between used ones, repeated chunks, and the file header's account of them.
#pragma once

#include <cstdint>
#include <vector>

#include "inspect/record_sequence.h"

namespace zanvik {

// The first and last live record of a chunk.
struct chunk_ends {
  std::size_t chunk = 0;  // index into the summaries
  sequence_record first;
  sequence_record last;
};

// The file header's fields about chunks and records.
struct header_claims {
  std::uint64_t oldest_chunk = 0;
  std::uint64_t newest_chunk = 0;
  std::uint64_t next_number = 0;
  std::uint64_t chunks = 0;
};

// `ends` has the chunks with live records, in the order of the file; the log is read as a ring that
// begins with the lowest number.
void find_in_order(const std::vector<chunk_summary>& chunks, const std::vector<chunk_ends>& ends,
                   record_sequence& sequence, finding_list& findings);

// The summary of the chunk with the highest number; `ends` is not empty.
std::size_t newest_chunk(const std::vector<chunk_ends>& ends);

// Compares the file header with the chunks.
void find_in_claims(const header_claims& claims, const std::vector<chunk_summary>& chunks,
                    const std::vector<chunk_ends>& ends, finding_list& findings);

}  // namespace zanvik
