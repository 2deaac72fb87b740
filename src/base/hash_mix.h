// The hash of the program's own tables, over keys that may come from a log.
//
// It depends on a secret that is drawn when the process starts, so nobody can make keys that
// collide more often than by chance. Hashes are valid in this process only. They are never written
// out, and no result may depend on them or on the order of a table that uses them.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>
#include <string_view>

namespace zanvik {

// Random words, none of them 0.
extern const std::array<std::uint64_t, 3> hash_secret;

namespace hash_detail {

__extension__ using wide_product = unsigned __int128;

// Both halves of the product of two words, combined into one.
inline std::uint64_t fold_product(std::uint64_t a, std::uint64_t b) {
  const auto product = static_cast<wide_product>(a) * b;
  return static_cast<std::uint64_t>(product) ^ static_cast<std::uint64_t>(product >> 64);
}

inline std::uint64_t word_at(const char* from) {
  std::uint64_t word;
  std::memcpy(&word, from, sizeof(word));
  return word;
}

// Up to 8 bytes as a word; longer texts overlap, shorter ones are padded with zeros.
inline std::uint64_t short_word(const char* from, std::size_t size) {
  std::uint64_t word = 0;
  if (size >= 4) {
    std::uint32_t low, high;
    std::memcpy(&low, from, sizeof(low));
    std::memcpy(&high, from + size - sizeof(high), sizeof(high));
    return std::uint64_t{high} << 32 | low;
  }
  for (std::size_t i = 0; i < size; ++i) {
    word |= std::uint64_t{static_cast<unsigned char>(from[i])} << (8 * i);
  }
  return word;
}

}  // namespace hash_detail

// 2^64 divided by the golden ratio. A key times this has its bits spread over the whole word, best
// in the high bits. For keys that do not come from a log.
inline constexpr std::uint64_t hash_multiplier = 0x9e3779b97f4a7c15;

// The hash of two numbers.
inline std::uint64_t keyed_hash(std::uint64_t a, std::uint64_t b) {
  return hash_detail::fold_product(a ^ hash_secret[0], b ^ hash_secret[1]);
}
// The hash of a number.
inline std::uint64_t keyed_hash(std::uint64_t number) { return keyed_hash(number, 0); }

// The hash of a text of any length. `before` is the hash of the part of the key before it.
inline std::uint64_t keyed_hash(std::string_view text, std::uint64_t before = 0) {
  using namespace hash_detail;
  const char* at = text.data();
  std::size_t left = text.size();
  // With a product of its own: otherwise the bytes it is mixed with could cancel it.
  std::uint64_t hash = fold_product(before ^ hash_secret[2], hash_secret[1]);
  for (; left > 16; at += 16, left -= 16) {
    hash = fold_product(word_at(at) ^ hash_secret[0], word_at(at + 8) ^ hash_secret[1] ^ hash);
  }
  std::uint64_t low, high = 0;
  if (left > 8) {
    low = word_at(at);
    high = word_at(at + left - 8);
  } else {
    low = short_word(at, left);
  }
  hash = fold_product(low ^ hash_secret[0], high ^ hash_secret[1] ^ hash);
  // The length distinguishes keys whose last words are equal.
  return fold_product(hash ^ hash_secret[2], text.size() ^ hash_secret[1]);
}
inline std::uint64_t keyed_hash(std::span<const std::byte> bytes, std::uint64_t before = 0) {
  return keyed_hash(std::string_view(reinterpret_cast<const char*>(bytes.data()), bytes.size()),
                    before);
}

// Extends `hash` by `text`.
inline std::size_t mix_hash(std::size_t hash, std::string_view text) {
  return static_cast<std::size_t>(keyed_hash(text, hash));
}

// For unordered containers whose keys are texts; finds views without making a string.
struct keyed_text_hash {
  using is_transparent = void;
  std::size_t operator()(std::string_view text) const {
    return static_cast<std::size_t>(keyed_hash(text));
  }
};

}  // namespace zanvik
