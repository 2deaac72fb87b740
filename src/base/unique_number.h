// Numbers that no other thing of this process ever has: keys of caches. Unlike an address, such a
// number does not come back when the thing is gone.
#pragma once

#include <atomic>
#include <cstdint>

namespace zanvik {

// From 1, ascending.
inline std::uint64_t unique_number() {
  static std::atomic<std::uint64_t> last = 0;
  return last.fetch_add(1, std::memory_order_relaxed) + 1;
}

}  // namespace zanvik
