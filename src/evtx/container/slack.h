// The search for record headers where none is declared: behind a damaged record, and in the free
// tail of a chunk. Both look at 32-bit words in fixed steps, never at each byte.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "base/byte_cursor.h"

namespace zanvik {

// Whether a record header stands at `offset` of the block: signature, and size in its bounds.
bool is_record_header(const byte_cursor& block, std::uint64_t offset);
// The same, with a time written that can be one.
bool is_plausible_record_header(const byte_cursor& block, std::uint64_t offset);

// The first plausible record behind the one at the start of `area`, as an offset in it. Nothing
// when the area does not start with a sound record: only from such a one can the walk go on.
std::optional<std::uint64_t> find_next_record(std::span<const std::byte> area);

// The offsets in `area`, at every fourth byte, where a record signature stands.
std::vector<std::uint64_t> find_record_signatures(std::span<const std::byte> area);

}  // namespace zanvik
