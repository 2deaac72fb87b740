#include "base/block_memory.h"

#include <sys/mman.h>

#include <limits>
#include <new>

namespace zanvik::uni {
namespace {

// Up to this size blocks come from the heap, which reuses the same pages for each log; the blocks
// of a log that is read block by block are far smaller.
constexpr std::uint64_t heap_limit_bytes = std::uint64_t{32} << 20;

}  // namespace

block_memory::block_memory(std::uint64_t size) {
  if (size <= heap_limit_bytes) {
    owned_.reset(new (std::nothrow) std::byte[static_cast<std::size_t>(size)]);
    if (owned_) bytes_ = {owned_.get(), static_cast<std::size_t>(size)};
    return;
  }
  if (size > static_cast<std::uint64_t>(std::numeric_limits<std::ptrdiff_t>::max())) return;
  const auto length = static_cast<std::size_t>(size);
  void* const address =
      ::mmap(nullptr, length, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  if (address == MAP_FAILED) return;
  bytes_ = {static_cast<std::byte*>(address), length};
  mapped_ = true;
}

block_memory::~block_memory() {
  if (mapped_) ::munmap(bytes_.data(), bytes_.size());
}

}  // namespace zanvik::uni
