#include "base/hash_mix.h"

#include <gtest/gtest.h>

#include <set>
#include <string>
#include <vector>

namespace zanvik {
namespace {

TEST(keyed_hash, secret_words_are_drawn) {
  const std::set<std::uint64_t> words(hash_secret.begin(), hash_secret.end());
  EXPECT_EQ(words.size(), hash_secret.size());
  EXPECT_FALSE(words.contains(0));
  EXPECT_FALSE(words.contains(1));
}

// Texts of each length around the steps of the loop, and all that differ from them in one bit, in
// their length or in the part before them: a byte that is not read would be noticed here.
TEST(keyed_hash, every_bit_and_the_length_count) {
  std::set<std::uint64_t> hashes;
  std::size_t texts = 0;
  const auto add = [&](const std::string& text, std::uint64_t before = 0) {
    EXPECT_EQ(keyed_hash(text, before), keyed_hash(std::string(text), before));
    hashes.insert(keyed_hash(text, before));
    ++texts;
  };
  for (std::size_t length = 0; length <= 50; ++length) {
    const std::string zeros(length, '\0');
    add(zeros);
    add(zeros, 1);
    for (std::size_t bit = 0; bit < 8 * length; ++bit) {
      std::string other = zeros;
      other[bit / 8] = static_cast<char>(1 << bit % 8);
      add(other);
    }
  }
  EXPECT_EQ(hashes.size(), texts);
}

// Tables use the low bits or a remainder; consecutive numbers, and those that differ only in high
// bits, must be at different places.
TEST(keyed_hash, low_bits_are_spread) {
  constexpr std::size_t places = 256;
  for (const int shift : {0, 16, 40, 56}) {
    std::vector<unsigned> hits(places);
    for (std::uint64_t i = 0; i < places; ++i) ++hits[keyed_hash(i << shift) % places];
    unsigned most = 0;
    for (const unsigned count : hits) most = std::max(most, count);
    EXPECT_LT(most, 16u) << "shift " << shift;  // of random places hardly ever more than 7
  }
}

}  // namespace
}  // namespace zanvik
