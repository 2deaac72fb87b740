// Positions of a byte string, or of a 32-bit word, in a block of bytes. Each is `base_offset` plus
// its position in the block. Too few bytes contain nothing.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

namespace zanvik {

// Sets `offsets` to the positions of `needle`, which do not overlap. `fast` skips ahead by the last
// byte of the window and, after a hit, by twice the needle's length. A hit closer than that to the
// one before is missed; this is meant. `first_only` stops at the first. True if there is any.
bool find_bytes(std::span<const std::byte> haystack, std::span<const std::byte> needle,
                std::vector<std::uint64_t>& offsets, std::uint64_t base_offset, bool fast,
                bool first_only);

// The position of the first `needle`.
std::optional<std::uint64_t> find_first_bytes(std::span<const std::byte> haystack,
                                              std::span<const std::byte> needle, bool fast);

// Sets `offsets` to the byte positions of `value`, little-endian, testing every `stride` bytes from
// the start; a stride below 4 finds nothing. True if there is any.
bool find_u32(std::vector<std::uint64_t>& offsets, std::span<const std::byte> words,
              std::uint32_t value, std::size_t stride, bool first_only);

}  // namespace zanvik
