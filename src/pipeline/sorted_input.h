// Items that are in order, one after the other, and the merging of many such inputs into one.
#pragma once

#include <span>
#include <string_view>

#include "pipeline/sort_key.h"

namespace zanvik {

class sorted_input {
 public:
  virtual ~sorted_input() = default;

  // Moves to the next item, the first one at first. False at the end and after an error, which the
  // input remembers.
  [[nodiscard]] virtual bool next() = 0;
  const sort_key& key() const { return key_; }
  // The bytes of the item, which live until the next call of `next` or `bytes` of any input.
  virtual std::string_view bytes() = 0;

 protected:
  sort_key key_;
};

// Hands out the items of all inputs by rising keys; of equal keys those of an earlier input first.
// False when `use` ended the work. Whether an input broke off is to be asked of the inputs.
bool merge_inputs(std::span<sorted_input* const> inputs, const item_use& use);

}  // namespace zanvik
