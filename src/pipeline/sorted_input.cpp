#include "pipeline/sorted_input.h"

#include <cstddef>
#include <utility>
#include <vector>

namespace zanvik {
namespace {

// A heap of inputs, the one with the first item on top.
class input_heap {
 public:
  explicit input_heap(std::span<sorted_input* const> inputs) {
    for (std::size_t i = 0; i < inputs.size(); ++i) {
      if (inputs[i]->next()) heap_.push_back({inputs[i]->key(), i, inputs[i]});
    }
    for (std::size_t i = heap_.size() / 2; i-- > 0;) sink(i);
  }

  bool empty() const { return heap_.empty(); }
  sorted_input& top() { return *heap_.front().input; }
  // Moves the top input to its next item.
  void advance() {
    entry& first = heap_.front();
    if (first.input->next()) {
      first.key = first.input->key();
    } else {
      first = heap_.back();
      heap_.pop_back();
    }
    if (!heap_.empty()) sink(0);
  }

 private:
  struct entry {
    sort_key key;
    std::size_t number;
    sorted_input* input;

    bool before(const entry& other) const {
      return key != other.key ? key < other.key : number < other.number;
    }
  };

  void sink(std::size_t at) {
    const entry moved = heap_[at];
    for (std::size_t child; (child = 2 * at + 1) < heap_.size(); at = child) {
      if (child + 1 < heap_.size() && heap_[child + 1].before(heap_[child])) ++child;
      if (!heap_[child].before(moved)) break;
      heap_[at] = heap_[child];
    }
    heap_[at] = moved;
  }

  std::vector<entry> heap_;
};

}  // namespace

bool merge_inputs(std::span<sorted_input* const> inputs, const item_use& use) {
  input_heap heap(inputs);
  while (!heap.empty()) {
    if (!use(heap.top().key(), heap.top().bytes())) return false;
    heap.advance();
  }
  return true;
}

}  // namespace zanvik
