#include <algorithm>
#include <cctype>

#include "base/text.h"
#include "sigma/expression.h"
#include "sigma/sigma_limits.h"
#include "sigma/text_pattern.h"

namespace zanvik::sigma {

expression expression::join(kind what, std::vector<expression> parts) {
  if (parts.size() == 1 && what != kind::not_any_of) return std::move(parts[0]);
  return {what, std::move(parts), 0};
}

expression expression::negate(expression part) {
  std::vector<expression> parts;
  parts.push_back(std::move(part));
  return {kind::not_any_of, std::move(parts), 0};
}

std::size_t expression::size() const {
  std::size_t size = 1;
  for (const expression& part : parts) size += part.size();
  return size;
}

namespace {

// `or` binds least, then `and`, then `not`; a name, `x of` or brackets bind most.
class condition_parser {
 public:
  condition_parser(std::string_view text, const std::vector<named_expression>& names)
      : text_(text), names_(names) {
    for (const named_expression& known : names)
      most_ += known.value.size() * limits::steps_for_step;
    most_ = std::min(most_, limits::rule_steps);
    advance();
  }

  std::string parse(expression& out) {
    out = any(0);
    if (error_.empty() && !token_.empty()) fail("unexpected '" + std::string(token_) + "'");
    return error_;
  }

 private:
  void fail(std::string why) {
    if (error_.empty()) error_ = std::move(why);
    token_ = {};
    text_ = {};
  }

  void advance() {
    while (!text_.empty() && std::isspace(static_cast<unsigned char>(text_[0]))) {
      text_.remove_prefix(1);
    }
    std::size_t length = text_.empty() ? 0 : 1;
    if (length != 0 && std::string_view("()|").find(text_[0]) == std::string_view::npos) {
      length = std::min(text_.find_first_of("()| \t\r\n"), text_.size());
    }
    token_ = text_.substr(0, length);
    text_.remove_prefix(length);
    if (token_ == "|") fail("aggregations behind '|' are obsolete; correlations took their place");
  }

  bool take(std::string_view word) {
    if (!equal_nocase(token_, word)) return false;
    advance();
    return true;
  }

  expression any(std::size_t depth) {
    std::vector<expression> parts;
    do parts.push_back(all(depth));
    while (take("or"));
    return expression::join(expression::kind::any_of, std::move(parts));
  }

  expression all(std::size_t depth) {
    std::vector<expression> parts;
    do parts.push_back(negation(depth));
    while (take("and"));
    return expression::join(expression::kind::all_of, std::move(parts));
  }

  expression negation(std::size_t depth) {
    bool negated = false;
    while (take("not")) negated = !negated;
    expression part = operand(depth);
    return negated ? expression::negate(std::move(part)) : part;
  }

  expression operand(std::size_t depth) {
    if (depth > limits::condition_depth) {
      fail("brackets are nested too deep");
      return {};
    }
    if (take("(")) {
      expression inner = any(depth + 1);
      if (error_.empty() && !take(")")) fail("a bracket is not closed");
      return inner;
    }
    const std::string_view name = token_;
    if (name.empty() || name == ")") {
      fail("the condition ends too early");
      return {};
    }
    advance();
    if (equal_nocase(token_, "of")) return quantified(name);
    for (const named_expression& known : names_) {
      if (known.name == name) return copy(known.value);
    }
    fail("no search identifier '" + std::string(name) + "'");
    return {};
  }

  expression quantified(std::string_view quantity) {
    const bool all = equal_nocase(quantity, "all");
    if (!all && quantity != "1") {
      fail("'" + std::string(quantity) + " of' is neither '1 of' nor 'all of'");
      return {};
    }
    advance();
    const bool them = equal_nocase(token_, "them");
    // Names have no backslashes and question marks, so only `*` has a meaning.
    const text_pattern pattern = text_pattern::parse(token_);
    std::vector<expression> parts;
    for (const named_expression& known : names_) {
      const bool hidden = known.name.starts_with('_') && !token_.starts_with('_');
      if (!hidden && (them || pattern.matches(known.name))) parts.push_back(copy(known.value));
    }
    if (parts.empty()) {
      fail("nothing fits '" + std::string(token_) + "'");
      return {};
    }
    advance();
    return expression::join(all ? expression::kind::all_of : expression::kind::any_of,
                            std::move(parts));
  }

  expression copy(const expression& value) {
    steps_ += value.size();
    if (steps_ > most_) {
      fail("the condition comes to too many steps");
      return {};
    }
    return value;
  }

  std::string_view text_, token_;
  const std::vector<named_expression>& names_;
  std::string error_;
  std::size_t steps_ = 0, most_ = limits::more_steps;
};

}  // namespace

std::string parse_condition(std::string_view text, const std::vector<named_expression>& names,
                            expression& out) {
  return condition_parser(text, names).parse(out);
}

}  // namespace zanvik::sigma
