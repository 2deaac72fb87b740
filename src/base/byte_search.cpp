#include "base/byte_search.h"

#include <array>
#include <cstring>

namespace zanvik {
namespace {

// How far the window may move, by its last byte.
std::array<std::size_t, 256> skip_table(std::span<const std::byte> needle) {
  std::array<std::size_t, 256> skips;
  skips.fill(needle.size());
  for (std::size_t i = 0; i + 1 < needle.size(); ++i) {
    skips[std::to_integer<std::size_t>(needle[i])] = needle.size() - 1 - i;
  }
  return skips;
}

// Both scans end as soon as `use(position)` returns false.
template <typename F>
void scan_plain(std::span<const std::byte> haystack, std::span<const std::byte> needle, F&& use) {
  std::size_t at = 0;
  while (haystack.size() - at >= needle.size()) {
    const bool hit = std::memcmp(haystack.data() + at, needle.data(), needle.size()) == 0;
    if (hit && !use(at)) return;
    at += hit ? needle.size() : 1;
  }
}

template <typename F>
void scan_fast(std::span<const std::byte> haystack, std::span<const std::byte> needle, F&& use) {
  const auto skips = skip_table(needle);
  std::size_t at = 0;
  while (at <= haystack.size() && haystack.size() - at >= needle.size()) {
    const bool hit = std::memcmp(haystack.data() + at, needle.data(), needle.size()) == 0;
    if (hit && !use(at)) return;
    const auto last = std::to_integer<std::size_t>(haystack[at + needle.size() - 1]);
    // Twice the length after a hit: closer hits are missed, which is meant.
    at += hit ? 2 * needle.size() : skips[last];
  }
}

template <typename F>
void scan(std::span<const std::byte> haystack, std::span<const std::byte> needle, bool fast,
          F&& use) {
  if (needle.empty() || needle.size() > haystack.size()) return;
  if (fast) {
    scan_fast(haystack, needle, use);
  } else {
    scan_plain(haystack, needle, use);
  }
}

}  // namespace

bool find_bytes(std::span<const std::byte> haystack, std::span<const std::byte> needle,
                std::vector<std::uint64_t>& offsets, std::uint64_t base_offset, bool fast,
                bool first_only) {
  offsets.clear();
  scan(haystack, needle, fast, [&](std::size_t at) {
    offsets.push_back(base_offset + at);
    return !first_only;
  });
  return !offsets.empty();
}

std::optional<std::uint64_t> find_first_bytes(std::span<const std::byte> haystack,
                                              std::span<const std::byte> needle, bool fast) {
  std::optional<std::uint64_t> found;
  scan(haystack, needle, fast, [&](std::size_t at) {
    found = at;
    return false;
  });
  return found;
}

bool find_u32(std::vector<std::uint64_t>& offsets, std::span<const std::byte> words,
              std::uint32_t value, std::size_t stride, bool first_only) {
  offsets.clear();
  if (stride < sizeof value) return false;
  for (std::size_t at = 0; at <= words.size() && words.size() - at >= sizeof value;) {
    std::uint32_t word;
    std::memcpy(&word, words.data() + at, sizeof word);
    if (word == value) offsets.push_back(at);
    if (word == value && first_only) break;
    if (stride > words.size() - at) break;  // `at + stride` could wrap
    at += stride;
  }
  return !offsets.empty();
}

}  // namespace zanvik
