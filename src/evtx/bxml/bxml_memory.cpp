#include "evtx/bxml/bxml_memory.h"

#include <algorithm>
#include <cstring>

#include "base/hash_mix.h"
#include "base/utf16_write.h"
#include "evtx/bxml/bxml_tokens.h"
#include "evtx/container/chunk.h"

namespace zanvik {
namespace {

constexpr std::size_t piece_bytes = 64 * 1024;

std::size_t room_for(std::size_t units) { return 3 * units + 8; }

}  // namespace

char* text_arena::reserve(std::size_t bytes) {
  if (bytes > room_) {
    const std::size_t size = std::max(bytes, piece_bytes);
    pieces_.push_back({std::make_unique_for_overwrite<char[]>(size), size});
    next_ = pieces_.back().bytes.get();
    room_ = size;
  }
  return next_;
}

std::string_view text_arena::keep(const char* end) {
  const auto size = static_cast<std::size_t>(end - next_);
  const std::string_view text(next_, size);
  next_ += size;
  room_ -= size;
  return text;
}

std::string_view text_arena::add_utf16(std::span<const std::byte> bytes, std::size_t& units_read) {
  // A text may end long before its bytes do; only what it needs is reserved.
  constexpr std::size_t short_text = 128;
  const std::size_t units = bytes.size() / 2;
  if (units > short_text) {
    std::size_t used = 0;
    while (used < units && (bytes[2 * used] | bytes[2 * used + 1]) != std::byte{0}) ++used;
    bytes = bytes.first(2 * used);
  }
  char* const out = reserve(room_for(bytes.size() / 2));
  return keep(write_utf8_from_utf16(out, bytes, units_read));
}

std::string_view text_arena::add_joined(std::initializer_list<std::string_view> pieces) {
  std::size_t size = 0;
  for (const std::string_view piece : pieces) size += piece.size();
  char* at = reserve(size);
  for (const std::string_view piece : pieces) at = std::copy(piece.begin(), piece.end(), at);
  return keep(at);
}

void text_arena::clear() {
  const bool keeps_first = !pieces_.empty() && pieces_.front().size == piece_bytes;
  pieces_.resize(keeps_first ? 1 : 0);
  next_ = keeps_first ? pieces_.front().bytes.get() : nullptr;
  room_ = keeps_first ? piece_bytes : 0;
}

void chunk_names::start_chunk() {
  names_.clear();
  texts_.clear();
}

const counted_text& chunk_names::at(const chunk_view& chunk, std::uint32_t offset) {
  const std::uint64_t hash = keyed_hash(offset, 0);
  known_name* known =
      names_.find(hash, [offset](const auto& each) { return each.offset == offset; });
  if (!known) known = &names_.add(hash, {offset, name_entry_at(chunk, offset, texts_)});
  return known->name;
}

bxml_stacks& bxml_memory::stacks_at(std::size_t depth) {
  while (stacks_.size() <= depth) stacks_.push_back(std::make_unique<bxml_stacks>());
  bxml_stacks& stacks = *stacks_[depth];
  stacks.items.clear();
  stacks.open_names.clear();
  return stacks;
}

}  // namespace zanvik
