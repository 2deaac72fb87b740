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
  if (!pieces_.empty()) pieces_.resize(1);
  next_ = pieces_.empty() ? nullptr : pieces_.front().get();
  room_ = pieces_.empty() ? 0 : first_bytes_;
}

void record_arena::grow(std::size_t bytes) {
  const bool small = tight_buffers || (pieces_.empty() && bytes <= first_piece - slack);
  const std::size_t size = tight_buffers ? bytes + slack
                           : small       ? first_piece
                                         : whole_pages(std::max(bytes + slack, later_piece));
  piece added(static_cast<char*>(small ? std::malloc(size) : std::aligned_alloc(large_page, size)));
  if (!added) throw std::bad_alloc();
  if (!small) (void)::madvise(added.get(), size, MADV_HUGEPAGE);  // only a hint
  pieces_.push_back(std::move(added));
  if (pieces_.size() == 1) first_bytes_ = size - slack;
  next_ = pieces_.back().get();
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
