// The search for record headers where none is declared: after a damaged record, and in the free
// tail of a chunk. Both test 32-bit words in fixed steps, never at each byte.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "base/byte_cursor.h"

namespace zanvik {

// Whether there is a record header at `offset` of the block: signature, and size within its bounds.
bool is_record_header(const byte_cursor& block, std::uint64_t offset);
// The same, with a plausible time written.
bool is_plausible_record_header(const byte_cursor& block, std::uint64_t offset);

// The first plausible record after the one at the start of `area`, as an offset in it. Nothing if
// the area does not start with a sound record: the walk can only continue from one.
std::optional<std::uint64_t> find_next_record(std::span<const std::byte> area);

// The offsets in `area`, at every fourth byte, that have a record signature.
std::vector<std::uint64_t> find_record_signatures(std::span<const std::byte> area);

}  // namespace zanvik
