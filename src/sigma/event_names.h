// The names that rules use for the fields of an event.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

#include "base/hash_mix.h"
#include "events/event_view.h"

namespace zanvik::sigma {

// The names of a shape's fields; `shape` must outlive this. A datum has its name, an element its
// own, an attribute those of element and attribute with `_` between (`Provider_Name`) and, below
// UserData, also its own; unnamed data are `Data`. Blanks in names are ignored. A name in another
// case is used only if no field has it as written. `EventID`, `Channel` and `Provider_Name` are
// only those of System.
class shape_names {
 public:
  explicit shape_names(const event_shape& shape);

  // The fields that a rule means by `name`, in order; all of them if it is empty.
  std::vector<std::uint32_t> find(std::string_view name) const;

 private:
  template <typename Value>
  using by_name = std::unordered_map<std::string, Value, keyed_text_hash, std::equal_to<>>;

  const event_shape& shape_;
  by_name<std::vector<std::uint32_t>> exact_;
  by_name<std::vector<std::pair<std::uint32_t, std::string>>> folded_;  // and the name as it stands
};

// The same for a single look-up.
std::vector<std::uint32_t> fields_of_name(const event_shape& shape, std::string_view name);

// The event's channel; for a legacy log, which has none, the name of its file.
std::string_view channel_of(const event_view& event, std::string& scratch);

}  // namespace zanvik::sigma
