#include "base/heap_pages.h"

#include <malloc.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cstdint>
#include <cstdlib>

namespace zanvik {
namespace {

constexpr int heap_step_bytes = 32 << 20;   // only what is touched takes memory
constexpr int mapped_from_bytes = 4 << 20;  // larger allocations have their own mapping
constexpr std::uintptr_t large_page_bytes = 2 << 20;
constexpr std::uintptr_t thread_heap_bytes = 64 << 20;  // reserved at such a multiple

}  // namespace

void use_large_heap_pages() {
#ifdef __GLIBC__
  ::mallopt(M_MMAP_THRESHOLD, mapped_from_bytes);
  ::mallopt(M_TOP_PAD, heap_step_bytes);
  ::mallopt(M_TRIM_THRESHOLD, 2 * heap_step_bytes);
  // More than the heap of a new process has left, so that it grows now.
  const auto before = reinterpret_cast<std::uintptr_t>(::sbrk(0));
  void* volatile const step = std::malloc(large_page_bytes);
  std::free(step);
  const auto after = reinterpret_cast<std::uintptr_t>(::sbrk(0));
  if (after <= before || after - before > 2 * std::uintptr_t{heap_step_bytes}) return;
  const std::uintptr_t start = (before + large_page_bytes - 1) & ~(large_page_bytes - 1);
  if (start < after) ::madvise(reinterpret_cast<void*>(start), after - start, MADV_HUGEPAGE);
#endif
}

void use_large_pages_in_thread() {
#ifdef __GLIBC__
  // A thread gets a heap of its own, all of which is reserved at its first allocation. If this one
  // came from elsewhere, the call below meets unmapped memory and fails.
  void* volatile const first = std::malloc(large_page_bytes / 2);
  const auto start = reinterpret_cast<std::uintptr_t>(first) & ~(thread_heap_bytes - 1);
  std::free(first);
  if (start != 0) ::madvise(reinterpret_cast<void*>(start), thread_heap_bytes, MADV_HUGEPAGE);
#endif
}

}  // namespace zanvik
