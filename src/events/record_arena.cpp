#include "events/record_arena.h"

#include <sys/mman.h>

#include <algorithm>
#include <cstring>
#include <new>

namespace zanvik {
namespace {

constexpr std::size_t large_page = std::size_t{2} << 20;
constexpr std::size_t first_piece = std::size_t{1} << 20;  // all that a small log needs
constexpr std::size_t later_piece = 2 * large_page;

std::size_t whole_pages(std::size_t bytes) { return (bytes + large_page - 1) & ~(large_page - 1); }

}  // namespace

void record_arena::clear() {
  // Memory that others hold is theirs.
  const bool keeps = !pieces_.empty() && pieces_.front().memory.use_count() == 1;
  pieces_.resize(keeps ? 1 : 0);
  next_ = keeps ? pieces_.front().memory.get() : nullptr;
  room_ = keeps ? pieces_.front().room : 0;
}

void record_arena::share(std::vector<held_memory>& memory) {
  for (const piece& shared : pieces_) memory.push_back(shared.memory);
  if (pieces_.size() > 1) pieces_.erase(pieces_.begin(), pieces_.end() - 1);
}

void record_arena::grow(std::size_t bytes) {
  const bool small = tight_buffers || (pieces_.empty() && bytes <= first_piece - slack);
  const std::size_t size = tight_buffers ? bytes + slack
                           : small       ? first_piece
                                         : whole_pages(std::max(bytes + slack, later_piece));
  char* const added =
      static_cast<char*>(small ? std::malloc(size) : std::aligned_alloc(large_page, size));
  if (!added) throw std::bad_alloc();
  if (!small) (void)::madvise(added, size, MADV_HUGEPAGE);  // only a hint
  pieces_.push_back({held_memory(added, [](char* memory) { std::free(memory); }), size - slack});
  next_ = added;
  room_ = size - slack;
}

void record_arena::move_along(std::size_t used, std::size_t bytes) {
  const char* const begin = next_;
  grow(used + bytes);
  if (used == 0) return;
  std::memcpy(next_, begin, used);
  if (tight_buffers) pieces_.erase(pieces_.end() - 2);  // it was empty
}

}  // namespace zanvik
