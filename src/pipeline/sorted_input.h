// Items that are in order, one after the other, and the merging of many such inputs into one.
#pragma once

#include <span>
#include <string_view>

#include "pipeline/sort_key.h"

namespace zanvik {

class sorted_input {
 public:
  virtual ~sorted_input() = default;

  // Moves to the next item, or first to the first one. False at the end and after an error, which
  // the input remembers.
  [[nodiscard]] virtual bool next() = 0;
  const sort_key& key() const { return key_; }
  // The bytes of the item, valid until the next call of `next` or `bytes` of any input.
  virtual std::string_view bytes() = 0;

 protected:
  sort_key key_;
};

// Passes on the items of all inputs by ascending keys; of equal keys those of an earlier input
// first. False if `use` ended the work. Ask the inputs whether one of them ended early.
bool merge_inputs(std::span<sorted_input* const> inputs, const item_use& use);

}  // namespace zanvik
