// A rule's condition as a tree of and, or, not over the tests of its fields.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace zanvik::sigma {

struct expression {
  enum class kind : unsigned char { all_of, any_of, not_any_of, test };
  kind what = kind::all_of;  // of no parts: always true
  std::vector<expression> parts;
  std::size_t test = 0;  // which of the rule's tests

  static expression of_test(std::size_t test) { return {kind::test, {}, test}; }
  static expression join(kind what, std::vector<expression> parts);
  static expression negate(expression part);
  std::size_t size() const;  // steps
};

// A search identifier of a rule and its expression.
struct named_expression {
  std::string name;
  expression value;
};

// Reads a condition: names, `1 of` and `all of` with `them` or a pattern, `and`, `or`, `not`,
// brackets; `out` is its expression. Returns an empty text, or why the condition cannot be used.
std::string parse_condition(std::string_view text, const std::vector<named_expression>& names,
                            expression& out);

// Whether the expression is true; `holds(test)` answers for one test.
template <typename Holds>
bool evaluate(const expression& e, Holds&& holds) {
  switch (e.what) {
    case expression::kind::test:
      return holds(e.test);
    case expression::kind::all_of:
      for (const expression& part : e.parts) {
        if (!evaluate(part, holds)) return false;
      }
      return true;
    default:
      for (const expression& part : e.parts) {
        if (evaluate(part, holds)) return e.what == expression::kind::any_of;
      }
      return e.what == expression::kind::not_any_of;
  }
}

}  // namespace zanvik::sigma
