// The shapes of a run: which one an event has, by the templates it is made from, how they nest and
// what its slots hold. The tree of a shape is built once, when its first event comes.
//
// In: the event's instances and slots, as a reader found them. Out: its shape, valid until the next
// call of `add` where it is `once`, and until `drop_if_full` drops it otherwise.
#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <vector>

#include "events/event_shape.h"

namespace zanvik {

// A template with the slots of its table, which are the event's slots from `first_slot` on.
struct event_instance {
  const event_template* body = nullptr;
  std::uint32_t first_slot = 0;
  std::uint32_t slot_count = 0;
  std::uint32_t parent_slot = 0;   // among all slots; the first instance has none
  std::uint32_t source_bytes = 0;  // of the binary XML, for the reader's account
};

// What a shape depends on in a value, in two bits: absent, plain, array, nested.
constexpr std::uint64_t kind_bits(std::uint16_t type) {
  return (type != value_type::null ? 1u : 0u) + (type >> 7 & 1u) +
         (type == value_type::bxml ? 2u : 0u);
}

class event_shapes {
 public:
  event_shapes();

  // The shape, if it is known; null otherwise, and `add` makes it then. `instances` has the
  // outermost one first; a slot's `child` is a number in it; `kinds` are the bits of all slots in
  // the order of their instances, 32 slots a word, each instance's from a new word on.
  event_shape* find(std::span<const event_instance> instances,
                    std::span<const std::uint64_t> kinds);
  event_shape& add(std::span<const event_instance> instances, std::span<const event_value> slots,
                   std::span<const std::uint64_t> kinds);

  // Between events: gives up trees when they take too much. They come again when asked for.
  void trim();
  // Starts anew when more is held than the limits allow. True when all shapes are gone, and with
  // them all use of the templates that they were made from.
  bool drop_if_full();
  void clear();

 private:
  struct known_shape {
    std::vector<std::uint64_t> key;
    event_shape shape;
  };
  bool make_key(std::span<const event_instance> instances, std::span<const std::uint64_t> kinds);
  void grow();

  std::vector<std::uint64_t> key_;
  std::vector<std::unique_ptr<known_shape>> shapes_;
  std::vector<std::uint32_t> table_;  // open addressing, 1 + number in `shapes_`; 0 is free
  event_shape once_;
  event_shape* last_ = nullptr;  // handed out, and may have grown since
  std::size_t held_bytes_ = 0;
};

// Builds the tree of `shape` from instances and slots.
void build_shape(std::span<const event_instance> instances, std::span<const event_value> slots,
                 event_shape& shape);

}  // namespace zanvik
