// The rules of one log source compiled into one matcher.
//
// A test that several rules use is evaluated once; the literals of all rules for a field are
// searched together, by how they are anchored. A rule is evaluated only if a test that it requires
// may have passed. Regular expressions and other costly tests wait until a rule needs them.
//
// In: detections, and for each event the values of the fields in `fields()`. Out: the rules that
// match. The matcher is constant once made; a match writes to a group_state, one for each thread.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "base/hash_mix.h"
#include "sigma/anchored_set.h"
#include "sigma/expression.h"
#include "sigma/field_test.h"
#include "sigma/literal_set.h"
#include "sigma/rule.h"

namespace zanvik::sigma {

class group_matcher;

// Knowledge about one event; made for one matcher, used for one event after the other.
class group_state {
 public:
  group_state(const group_matcher& matcher, literal_scratch& literals);

  // For each field of the matcher, in order. The caller fills in those that the event has, and
  // clears them after the match.
  std::vector<field_values> values;
  // Rules of the last match in which a regular expression reached a limit.
  std::vector<std::uint32_t> gave_up;
  // By rule: skip it, whatever else is true.
  std::vector<bool> skipped;

 private:
  friend class group_matcher;
  literal_scratch& literals_;
  std::uint64_t event_ = 0;
  std::vector<std::uint64_t> tests_;  // number of the event, times 4, and what is known
  std::vector<std::uint64_t> rules_;  // number of the event in which the rule was put up
  std::vector<std::uint32_t> candidates_;
};

class group_matcher {
 public:
  // With `plain_literals`, the plain engine is used for literals in any case. The rules must
  // outlive the matcher.
  explicit group_matcher(const std::vector<const rule*>& rules, bool plain_literals = false);

  // The names of the fields that rules use; an empty one stands for all values of an event.
  const std::vector<std::string>& fields() const { return fields_; }
  // Which of the fields the rule uses.
  const std::vector<std::uint32_t>& fields_of(std::size_t rule) const {
    return rules_[rule].fields;
  }
  std::size_t rule_count() const { return rules_.size(); }
  const rule& rule_at(std::size_t i) const { return *rules_[i].content; }

  // Whether the rule may match an event of which only some fields are known; `known(field)` returns
  // a field's values, or null.
  template <typename Known>
  bool may_match(std::size_t rule, Known&& known, test_scratch& scratch) const;

  // Puts the numbers of the rules that match into `matches`, in ascending order. `asked` are the
  // fields that are filled in; `wanted(rule)` says whether a rule is needed.
  void match(group_state& state, const std::vector<std::uint32_t>& asked,
             const std::vector<bool>& wanted, test_scratch& scratch,
             std::vector<std::uint32_t>& matches) const;

 private:
  friend class group_state;
  // How a test's answer is found.
  enum class way : unsigned char {
    search,  // by its field's search alone
    verify,  // the search says whether it may pass
    ask,     // no search can tell
  };
  struct compiled_test {
    const field_test* content;
    std::uint32_t field;
    std::uint32_t other;  // field of a test of kind field
    way how = way::ask;
    double likelihood = 1;             // of passing, as far as the literal tells
    std::vector<std::uint32_t> rules;  // that cannot match unless this or another test passes
  };
  struct compiled_rule {
    const rule* content;
    expression condition;               // over compiled tests
    std::vector<std::uint32_t> fields;  // that it asks for
  };
  struct field_search {
    // Tests of whole values.
    std::unordered_map<std::string, std::vector<std::uint32_t>, keyed_text_hash, std::equal_to<>>
        equal;
    anchored_set starts{false}, ends{true};
    std::vector<std::vector<std::uint32_t>> contained;  // tests of each literal
    std::unique_ptr<literal_set> literals;
  };
  // Tests of which one must pass, and how likely that is.
  struct clause {
    std::vector<std::uint32_t> tests;
    double likelihood = 2;  // above 1: there is no such clause
  };
  class builder;

  bool test_passes(std::uint32_t test, group_state& state, test_scratch& scratch) const;
  void search_value(const field_search& search, std::string_view folded, group_state& state) const;
  void found(std::uint32_t test, group_state& state) const;

  std::vector<std::string> fields_;
  std::vector<compiled_test> tests_;
  std::vector<compiled_rule> rules_;
  std::vector<field_search> searches_;  // of each field
  std::vector<std::uint32_t> always_;   // rules that no search can spare
};

// Whether an expression may be true, if `answer` says whether a test passes (1), fails (0), or is
// unknown (-1).
template <typename Answer>
int evaluate_partly(const expression& e, Answer&& answer) {
  if (e.what == expression::kind::test) return answer(e.test);
  const int decides = e.what == expression::kind::all_of ? 0 : 1;
  int result = 1 - decides;
  for (const expression& part : e.parts) {
    const int known = evaluate_partly(part, answer);
    if (known == decides) {
      result = decides;
      break;
    }
    if (known < 0) result = -1;
  }
  return e.what == expression::kind::not_any_of && result >= 0 ? 1 - result : result;
}

template <typename Known>
bool group_matcher::may_match(std::size_t rule, Known&& known, test_scratch& scratch) const {
  static const field_values none;
  return evaluate_partly(rules_[rule].condition, [&](std::size_t test) {
           const compiled_test& t = tests_[test];
           const field_values* const values = known(fields_[t.field]);
           if (values == nullptr || t.content->what == field_test::kind::field) return -1;
           return static_cast<int>(field_passes(*t.content, *values, none, scratch));
         }) != 0;
}

}  // namespace zanvik::sigma
