// Literals that a text must begin with, all searched at once.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace zanvik::sigma {

class anchored_set {
 public:
  // With `backwards`, the literals are those that a text must end with.
  explicit anchored_set(bool backwards) : backwards_(backwards) {}

  void add(std::string_view literal, std::uint32_t number) {
    std::string text(literal);
    if (backwards_) std::reverse(text.begin(), text.end());
    literals_.emplace_back(std::move(text), number);
  }

  // After the last `add`.
  void finish() { std::sort(literals_.begin(), literals_.end()); }

  // Calls `found(number)` for each literal that `text` begins (or ends) with. The literals that
  // begin with the characters read so far are next to each other; each character leaves a part of
  // them.
  template <typename Found>
  void find(std::string_view text, Found&& found) const {
    std::size_t low = 0, high = literals_.size();
    for (std::size_t depth = 0; low < high; ++depth) {
      for (; low < high && literals_[low].first.size() == depth; ++low) {
        found(literals_[low].second);
      }
      if (depth == text.size()) return;
      const auto c =
          static_cast<unsigned char>(backwards_ ? text[text.size() - 1 - depth] : text[depth]);
      low = bound(low, high, depth, c);
      high = bound(low, high, depth, c + 1U);
    }
  }

 private:
  // The first of the literals from `low` to `high` whose character at `depth` is not below `c`.
  std::size_t bound(std::size_t low, std::size_t high, std::size_t depth, unsigned c) const {
    while (low < high) {
      const std::size_t middle = low + (high - low) / 2;
      if (static_cast<unsigned char>(literals_[middle].first[depth]) < c) {
        low = middle + 1;
      } else {
        high = middle;
      }
    }
    return low;
  }

  bool backwards_;
  std::vector<std::pair<std::string, std::uint32_t>> literals_;
};

}  // namespace zanvik::sigma
