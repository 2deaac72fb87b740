// What the hashes of the program's own tables are made with.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string_view>

namespace zanvik {

// 2^64 divided by the golden ratio. A key times this has its bits spread over the whole word, the
// high ones best.
inline constexpr std::uint64_t hash_multiplier = 0x9e3779b97f4a7c15;

// The hash of what `hash` is of, with `text` behind it.
inline std::size_t mix_hash(std::size_t hash, std::string_view text) {
  return hash * hash_multiplier + std::hash<std::string_view>{}(text);
}

}  // namespace zanvik
