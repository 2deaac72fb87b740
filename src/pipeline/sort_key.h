// What items are ordered by: three numbers, the first of them first. Whoever makes the key says
// what they are (a time, the number of a log, ...). Items with equal keys keep the order they came
// in.
#pragma once

#include <array>
#include <compare>
#include <cstdint>
#include <functional>
#include <string_view>

namespace zanvik {

struct sort_key {
  std::array<std::uint64_t, 3> parts{};

  auto operator<=>(const sort_key&) const = default;
};

// Takes an item, whose bytes live during the call. False ends the work.
using item_use = std::function<bool(const sort_key& key, std::string_view bytes)>;

}  // namespace zanvik
