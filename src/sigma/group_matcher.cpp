#include "sigma/group_matcher.h"

#include <algorithm>
#include <cmath>

#include "base/fold_case.h"
#include "sigma/sigma_limits.h"

namespace zanvik::sigma {
namespace {

// What is known about a test in an event.
constexpr std::uint64_t passed = 1, failed = 2, may_pass = 3;

}  // namespace

group_state::group_state(const group_matcher& matcher, literal_scratch& literals)
    : values(matcher.fields_.size()),
      skipped(matcher.rules_.size()),
      literals_(literals),
      tests_(matcher.tests_.size()),
      rules_(matcher.rules_.size()) {
  for (const auto& search : matcher.searches_) {
    if (search.literals) search.literals->prepare(literals);
  }
}

void group_matcher::found(std::uint32_t test, group_state& state) const {
  if (state.tests_[test] >> 2 == state.event_) return;
  const compiled_test& t = tests_[test];
  state.tests_[test] = state.event_ << 2 | (t.how == way::search ? passed : may_pass);
  for (const std::uint32_t r : t.rules) {
    if (state.rules_[r] == state.event_) continue;
    state.rules_[r] = state.event_;
    state.candidates_.push_back(r);
  }
}

void group_matcher::search_value(const field_search& search, std::string_view folded_text,
                                 group_state& state) const {
  const auto note = [&](std::uint32_t test) { found(test, state); };
  if (const auto equal = search.equal.find(folded_text); equal != search.equal.end()) {
    for (const std::uint32_t test : equal->second) note(test);
  }
  search.starts.find(folded_text, note);
  search.ends.find(folded_text, note);
  if (!search.literals || folded_text.empty()) return;
  search.literals->find(folded_text, state.literals_);
  for (const std::uint32_t literal : state.literals_.found) {
    for (const std::uint32_t test : search.contained[literal]) note(test);
  }
}

bool group_matcher::test_passes(std::uint32_t test, group_state& state,
                                test_scratch& scratch) const {
  const compiled_test& t = tests_[test];
  std::uint64_t& known = state.tests_[test];
  const bool seen = known >> 2 == state.event_;
  if (seen && (known & 3) != may_pass) return (known & 3) == passed;
  if (!seen && t.how != way::ask) return false;
  const bool passes =
      field_passes(*t.content, state.values[t.field], state.values[t.other], scratch);
  known = state.event_ << 2 | (passes ? passed : failed);
  return passes;
}

void group_matcher::match(group_state& state, const std::vector<std::uint32_t>& asked,
                          const std::vector<bool>& wanted, test_scratch& scratch,
                          std::vector<std::uint32_t>& matches) const {
  ++state.event_;
  state.candidates_ = always_;
  for (const std::uint32_t field : asked) {
    for (const field_value& value : state.values[field]) {
      search_value(searches_[field], value.folded, state);
    }
  }
  matches.clear();
  state.gave_up.clear();
  // The results of one rule are used by later ones, so their order must not depend on searches.
  std::sort(state.candidates_.begin(), state.candidates_.end());
  for (const std::uint32_t r : state.candidates_) {
    if (!wanted[r] || state.skipped[r]) continue;
    const bool holds = evaluate(rules_[r].condition, [&](std::size_t test) {
      return test_passes(static_cast<std::uint32_t>(test), state, scratch);
    });
    if (holds) matches.push_back(r);
    if (scratch.gave_up) state.gave_up.push_back(r);
    scratch.gave_up = false;
  }
}

// Joins the tests of all rules, sorts them into searches, and finds what each rule requires.
class group_matcher::builder {
 public:
  builder(group_matcher& out, bool plain_literals) : out_(out), plain_(plain_literals) {}

  void add(const rule& content) {
    compiled_rule compiled{&content, content.condition, {}};
    std::vector<std::uint32_t> tests;
    for (const field_test& test : content.tests) tests.push_back(test_number(test));
    renumber(compiled.condition, tests);
    for (const std::uint32_t t : tests) {
      compiled.fields.push_back(out_.tests_[t].field);
      compiled.fields.push_back(out_.tests_[t].other);
    }
    std::sort(compiled.fields.begin(), compiled.fields.end());
    compiled.fields.erase(std::unique(compiled.fields.begin(), compiled.fields.end()),
                          compiled.fields.end());
    out_.rules_.push_back(std::move(compiled));
  }

  void finish() {
    out_.searches_.resize(out_.fields_.size());
    literals_.resize(out_.fields_.size());
    for (std::uint32_t t = 0; t < out_.tests_.size(); ++t) place(t);
    for (std::size_t f = 0; f < literals_.size(); ++f) finish_search(f);
    for (std::uint32_t r = 0; r < out_.rules_.size(); ++r) {
      const clause best = best_clause(out_.rules_[r].condition);
      if (best.likelihood > 1) out_.always_.push_back(r);
      if (best.likelihood > 1) continue;
      for (const std::uint32_t t : best.tests) {
        if (out_.tests_[t].rules.empty() || out_.tests_[t].rules.back() != r) {
          out_.tests_[t].rules.push_back(r);
        }
      }
    }
  }

 private:
  std::uint32_t field_number(const std::string& name) {
    const auto [it, fresh] =
        field_numbers_.try_emplace(name, static_cast<std::uint32_t>(out_.fields_.size()));
    if (fresh) out_.fields_.push_back(name);
    return it->second;
  }

  std::uint32_t test_number(const field_test& test) {
    const auto [it, fresh] =
        test_numbers_.try_emplace(test.key(), static_cast<std::uint32_t>(out_.tests_.size()));
    if (fresh) {
      const std::uint32_t field = field_number(test.field);
      const bool refers = test.what == field_test::kind::field;
      out_.tests_.push_back(
          {&test, field, refers ? field_number(test.other) : field, way::ask, 1, {}});
    }
    return it->second;
  }

  static void renumber(expression& e, const std::vector<std::uint32_t>& tests) {
    if (e.what == expression::kind::test) e.test = tests[e.test];
    for (expression& part : e.parts) renumber(part, tests);
  }

  void place(std::uint32_t number) {
    compiled_test& t = out_.tests_[number];
    if (t.content->what == field_test::kind::regex && !t.content->literal.empty()) {
      contained(number, t.content->literal, false);
    } else if (t.content->what == field_test::kind::text) {
      place_text(number);
    }
  }

  void place_text(std::uint32_t number) {
    compiled_test& t = out_.tests_[number];
    const text_pattern& pattern = t.content->pattern;
    field_search& search = out_.searches_[t.field];
    if (t.content->cased || !pattern.is_simple()) {
      const std::string literal = folded(pattern.longest_literal());
      if (!literal.empty()) contained(number, literal, false);
      return;
    }
    const std::string_view text = pattern.simple_text();
    if (pattern.opens_start() && pattern.opens_end()) {
      if (!text.empty()) contained(number, text, true);
      return;
    }
    if (pattern.opens_start()) {
      search.ends.add(text, number);
    } else if (pattern.opens_end()) {
      search.starts.add(text, number);
    } else {
      search.equal[std::string(text)].push_back(number);
    }
    searched(number, way::search, text.size());
  }

  void searched(std::uint32_t number, way how, std::size_t length) {
    out_.tests_[number].how = how;
    out_.tests_[number].likelihood =
        std::ldexp(1, -static_cast<int>(std::min<std::size_t>(length, 40)));
  }

  // `whole`: the literal is the whole test.
  void contained(std::uint32_t number, std::string_view literal, bool whole) {
    compiled_test& t = out_.tests_[number];
    const std::string_view start = literal.substr(0, limits::searched_literal_bytes);
    auto& numbers = literals_[t.field].numbers;
    auto& tests = out_.searches_[t.field].contained;
    const auto [it, fresh] =
        numbers.try_emplace(std::string(start), static_cast<std::uint32_t>(tests.size()));
    if (fresh) {
      tests.emplace_back();
      literals_[t.field].texts.emplace_back(start);
    }
    tests[it->second].push_back(number);
    searched(number, whole && start.size() == literal.size() ? way::search : way::verify,
             literal.size());
  }

  void finish_search(std::size_t field) {
    field_search& search = out_.searches_[field];
    search.starts.finish();
    search.ends.finish();
    const std::vector<std::string>& texts = literals_[field].texts;
    if (texts.empty()) return;
    search.literals = plain_ ? make_plain_literal_set(texts) : make_literal_set(texts);
  }

  clause best_clause(const expression& e) const {
    clause out;
    if (e.what == expression::kind::test) {
      const compiled_test& t = out_.tests_[e.test];
      if (t.how != way::ask) out = {{static_cast<std::uint32_t>(e.test)}, t.likelihood};
    } else if (e.what == expression::kind::all_of) {
      for (const expression& part : e.parts) {
        clause other = best_clause(part);
        if (other.likelihood < out.likelihood) out = std::move(other);
      }
    } else if (e.what == expression::kind::any_of && !e.parts.empty()) {
      out.likelihood = 0;
      for (const expression& part : e.parts) {
        const clause other = best_clause(part);
        if (other.likelihood > 1) return {};
        out.tests.insert(out.tests.end(), other.tests.begin(), other.tests.end());
        out.likelihood = std::min(out.likelihood + other.likelihood, 1.0);
      }
    }
    return out;
  }

  struct field_literals {
    std::unordered_map<std::string, std::uint32_t, keyed_text_hash> numbers;
    std::vector<std::string> texts;
  };

  group_matcher& out_;
  bool plain_;
  std::unordered_map<std::string, std::uint32_t, keyed_text_hash> field_numbers_, test_numbers_;
  std::vector<field_literals> literals_;
};

group_matcher::group_matcher(const std::vector<const rule*>& rules, bool plain_literals) {
  builder work(*this, plain_literals);
  for (const rule* r : rules) work.add(*r);
  work.finish();
}

}  // namespace zanvik::sigma
