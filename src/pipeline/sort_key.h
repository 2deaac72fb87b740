// The key of an item: four numbers, the first one counts first. The code that makes the key
// decides what they are (a time, the number of a log, ...). Items with equal keys keep their order
// of arrival.
#pragma once

#include <array>
#include <compare>
#include <cstdint>
#include <functional>
#include <string_view>

namespace zanvik {

struct sort_key {
  std::array<std::uint64_t, 4> parts{};

  auto operator<=>(const sort_key&) const = default;
};

// Takes an item, whose bytes are valid during the call. False ends the work.
using item_use = std::function<bool(const sort_key& key, std::string_view bytes)>;

}  // namespace zanvik
