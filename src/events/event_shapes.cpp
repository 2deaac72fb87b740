#include "events/event_shapes.h"

#include <algorithm>
#include <utility>

#include "base/hash_mix.h"
#include "base/limits.h"
#include "base/unique_number.h"

namespace zanvik {
namespace {

constexpr std::size_t first_places = 1024;

// With the secret: the kinds of slots are those of the log.
std::uint64_t hash_of(std::span<const std::uint64_t> key) {
  std::uint64_t hash = key.size() ^ hash_secret[0];
  for (const std::uint64_t word : key) hash = hash_detail::fold_product(hash ^ word, hash_secret[1]);
  return hash;
}

}  // namespace

event_shapes::event_shapes() : table_(first_places) {}

// The key: for each instance its template and table, then the kinds of all slots. False for an
// event that cannot share a shape with another.
bool event_shapes::make_key(std::span<const event_instance> instances,
                            std::span<const std::uint64_t> kinds) {
  key_.resize(2 * instances.size() + kinds.size());
  bool shared = true;
  std::uint64_t* word = key_.data();
  for (const event_instance& instance : instances) {
    shared = shared && !instance.body->once;
    *word++ = instance.body->id;
    *word++ = std::uint64_t{instance.slot_count} << 32 | instance.parent_slot;
  }
  std::copy(kinds.begin(), kinds.end(), word);
  return shared;
}

event_shape* event_shapes::find(std::span<const event_instance> instances,
                                std::span<const std::uint64_t> kinds) {
  if (!make_key(instances, kinds)) return nullptr;
  std::size_t at = hash_of(key_) & (table_.size() - 1);
  for (; table_[at] != 0; at = (at + 1) & (table_.size() - 1)) {
    known_shape& known = *shapes_[table_[at] - 1];
    if (std::equal(known.key.begin(), known.key.end(), key_.begin(), key_.end())) {
      last_ = &known.shape;
      return last_;
    }
  }
  return nullptr;
}

event_shape& event_shapes::add(std::span<const event_instance> instances,
                               std::span<const event_value> slots,
                               std::span<const std::uint64_t> kinds) {
  if (!make_key(instances, kinds)) {
    once_ = {};
    once_.once = true;
    once_.id = unique_number();
    last_ = nullptr;
    build_shape(instances, slots, once_);
    return once_;
  }
  if (2 * shapes_.size() >= table_.size()) grow();
  std::size_t at = hash_of(key_) & (table_.size() - 1);
  while (table_[at] != 0) at = (at + 1) & (table_.size() - 1);
  auto& added = *shapes_.emplace_back(std::make_unique<known_shape>());
  table_[at] = static_cast<std::uint32_t>(shapes_.size());
  added.key = key_;
  added.shape.id = unique_number();
  added.shape.index = static_cast<std::uint32_t>(shapes_.size());
  build_shape(instances, slots, added.shape);
  last_ = &added.shape;
  return added.shape;
}

void event_shapes::trim() {
  if (last_) held_bytes_ += std::exchange(last_->new_bytes, 0);
  if (held_bytes_ <= limits::cached_tree_bytes) return;
  for (const auto& known : shapes_) known->shape.make_hollow();
  held_bytes_ = 0;
}

void event_shapes::grow() {
  table_.assign(2 * table_.size(), 0);
  for (std::size_t i = 0; i < shapes_.size(); ++i) {
    std::size_t at = hash_of(shapes_[i]->key) & (table_.size() - 1);
    while (table_[at] != 0) at = (at + 1) & (table_.size() - 1);
    table_[at] = static_cast<std::uint32_t>(i + 1);
  }
}

bool event_shapes::drop_if_full() {
  if (shapes_.size() <= limits::cached_shapes) return false;
  clear();
  return true;
}

void event_shapes::clear() {
  shapes_.clear();
  table_.assign(first_places, 0);
  held_bytes_ = 0;
  last_ = nullptr;
}

}  // namespace zanvik
