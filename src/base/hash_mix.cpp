#include "base/hash_mix.h"

#include <unistd.h>

#include <chrono>

namespace zanvik {
namespace {

// A system without random numbers leaves the time and the program's place in memory, which whoever
// made a log cannot know either.
void fill_without_help(std::array<std::uint64_t, 3>& secret) {
  const auto now = std::chrono::high_resolution_clock::now().time_since_epoch().count();
  std::uint64_t state = static_cast<std::uint64_t>(now) ^
                        reinterpret_cast<std::uintptr_t>(&secret) ^
                        static_cast<std::uint64_t>(::getpid()) << 32;
  for (std::uint64_t& word : secret) {
    state += hash_multiplier;
    word ^= hash_detail::fold_product(state, ~state);
  }
}

std::array<std::uint64_t, 3> draw_secret() {
  std::array<std::uint64_t, 3> secret{};
  if (::getentropy(secret.data(), sizeof(secret)) != 0) fill_without_help(secret);
  // An odd word never wipes out what it is multiplied with.
  for (std::uint64_t& word : secret) word |= 1;
  return secret;
}

}  // namespace

const std::array<std::uint64_t, 3> hash_secret = draw_secret();

}  // namespace zanvik
