#include "events/event_shapes.h"

#include <atomic>
#include <cstring>

#include "base/hash_mix.h"
#include "base/limits.h"

namespace zanvik {
namespace {

constexpr std::size_t first_places = 1024;

// What a shape depends on in a value, in two bits.
std::uint64_t kind_bits(const event_value& value) {
  if (value.type == value_type::null) return 0;
  if (value.type == value_type::bxml) return value.child == 0 ? 1 : 3;
  return value.is_array() ? 2 : 1;
}

std::uint64_t hash_of(std::span<const std::uint64_t> key) {
  std::uint64_t hash = key.size();
  for (const std::uint64_t word : key) {
    hash = (hash ^ word) * hash_multiplier;
    hash ^= hash >> 32;
  }
  return hash;
}

// Ids of shapes are told apart across all readers of a run.
std::uint64_t next_id() {
  static std::atomic<std::uint64_t> last = 0;
  return ++last;
}

}  // namespace

event_shapes::event_shapes() : table_(first_places) {}

// The key: for each instance its template and table, then two bits for each slot. False for an
// event that no other can share a shape with.
bool event_shapes::make_key(std::span<const event_instance> instances,
                            std::span<const event_value> slots) {
  key_.clear();
  bool shared = true;
  for (const event_instance& instance : instances) {
    shared = shared && !instance.body->once;
    key_.push_back(instance.body->id);
    key_.push_back(std::uint64_t{instance.slot_count} << 32 | instance.parent_slot);
  }
  std::uint64_t word = 0;
  unsigned shift = 0;
  for (const event_value& value : slots) {
    word |= kind_bits(value) << shift;
    shift += 2;
    if (shift == 64) {
      key_.push_back(word);
      word = 0;
      shift = 0;
    }
  }
  if (shift != 0) key_.push_back(word);
  return shared;
}

const event_shape& event_shapes::find(std::span<const event_instance> instances,
                                      std::span<const event_value> slots) {
  if (!make_key(instances, slots)) {
    once_ = {};
    once_.once = true;
    once_.id = next_id();
    once_.index = 0;
    build_shape(instances, slots, once_);
    return once_;
  }
  std::size_t at = hash_of(key_) & (table_.size() - 1);
  for (; table_[at] != 0; at = (at + 1) & (table_.size() - 1)) {
    const known_shape& known = *shapes_[table_[at] - 1];
    if (known.key.size() == key_.size() &&
        std::memcmp(known.key.data(), key_.data(), 8 * key_.size()) == 0) {
      return known.shape;
    }
  }
  auto& added = *shapes_.emplace_back(std::make_unique<known_shape>());
  table_[at] = static_cast<std::uint32_t>(shapes_.size());
  added.key = key_;
  added.shape.id = next_id();
  added.shape.index = static_cast<std::uint32_t>(shapes_.size());
  build_shape(instances, slots, added.shape);
  held_bytes_ += added.shape.source_bytes;
  if (2 * shapes_.size() > table_.size()) grow();
  return added.shape;
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
  if (shapes_.size() <= limits::cached_shapes && held_bytes_ <= limits::cached_shape_bytes) {
    return false;
  }
  clear();
  return true;
}

void event_shapes::clear() {
  shapes_.clear();
  table_.assign(first_places, 0);
  held_bytes_ = 0;
}

}  // namespace zanvik
