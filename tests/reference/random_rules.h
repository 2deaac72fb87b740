// Rules and events of few letters and fields, so that much of them meets: what a source of random
// numbers, or of a fuzzer's bytes, makes of the same alphabet.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

#include "reference/rule_checks.h"

namespace zanvik::sigma {

class random_rules {
 public:
  explicit random_rules(std::function<std::uint32_t()> next) : next_(std::move(next)) {}

  // A rule's document, with the line that parts it from the next.
  std::string rule();
  // An event with some of the fields that rules ask for.
  made_event event();
  // At most `most` of the letters.
  std::string text(std::string_view letters, std::size_t most);

 private:
  template <typename List>
  auto one_of(const List& list) {
    return list[next_() % std::size(list)];
  }
  std::string field_and_value();

  std::function<std::uint32_t()> next_;
};

}  // namespace zanvik::sigma
