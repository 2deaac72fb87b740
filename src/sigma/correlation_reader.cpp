// The `correlation` part of a rule.
#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>

#include "sigma/rule_reader.h"
#include "sigma/sigma_limits.h"

namespace zanvik::sigma {
namespace {

using kind = rule_correlation::kind;
using relation = rule_correlation::relation;

// In the order of `kind`.
constexpr std::array<std::string_view, 7> kind_names{"event_count",      "value_count", "temporal",
                                                     "temporal_ordered", "value_sum",   "value_avg",
                                                     "value_percentile"};
constexpr std::array<std::string_view, 6> relation_names{"gt", "gte", "lt", "lte", "eq", "neq"};

template <typename Names>
std::size_t index_of(const Names& names, std::string_view name) {
  std::size_t i = 0;
  while (i < names.size() && names[i] != name) ++i;
  return i;
}

std::optional<std::uint64_t> whole_number(std::string_view text) {
  std::uint64_t value = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  if (error != std::errc() || end != text.data() + text.size()) return std::nullopt;
  return value;
}

std::vector<std::string> list_of(const yaml_node& node, std::string_view key) {
  std::vector<std::string> out;
  const yaml_node* const value = node.find(key);
  if (value == nullptr) return out;
  if (value->is_text()) return {value->text};
  for (const yaml_node& item : value->items) {
    if (!item.is_text())
      throw rule_problem{item.line, "'" + std::string(key) + "' is no list of texts"};
    out.push_back(item.text);
  }
  return out;
}

std::uint64_t timespan_of(const yaml_node& node) {
  const std::string_view text = node.text_of("timespan");
  const std::size_t unit = text.empty() ? 4 : std::string_view("smhd").find(text.back());
  const auto count = unit < 4 ? whole_number(text.substr(0, text.size() - 1)) : std::nullopt;
  constexpr std::array<std::uint64_t, 4> seconds{1, 60, 3600, 86400};
  // Longer than any log, and far from overflow in units of 100 ns.
  constexpr std::uint64_t most = 86400ULL * 36525;
  if (!count || *count > most / seconds[unit]) {
    throw rule_problem{node.line, "'timespan' is missing or no number with s, m, h or d"};
  }
  return *count * seconds[unit];
}

void read_condition(const yaml_node& condition, rule_correlation& out) {
  if (!condition.is_map()) throw rule_problem{condition.line, "the condition is no map"};
  out.fields = list_of(condition, "field");
  for (std::size_t i = 0; i < condition.items.size(); ++i) {
    if (condition.keys[i] == "field") continue;
    const std::size_t which = index_of(relation_names, condition.keys[i]);
    const auto limit = number_of(condition.items[i].text);
    if (which == relation_names.size() || !limit) {
      throw rule_problem{condition.items[i].line, "the condition compares with no number"};
    }
    out.bounds.push_back({static_cast<relation>(which), *limit});
  }
}

void read_aliases(const yaml_node& node, rule_correlation& out) {
  const yaml_node* const aliases = node.find("aliases");
  if (aliases == nullptr) return;
  for (std::size_t i = 0; i < aliases->keys.size(); ++i) {
    field_alias alias{aliases->keys[i], {}};
    const yaml_node& by_rule = aliases->items[i];
    for (std::size_t k = 0; k < by_rule.keys.size(); ++k) {
      alias.by_rule.emplace_back(by_rule.keys[k], by_rule.items[k].text);
    }
    out.aliases.push_back(std::move(alias));
  }
}

}  // namespace

bool rule_correlation::bound::holds(long double value) const {
  switch (compare) {
    case relation::gt:
      return value > limit;
    case relation::gte:
      return value >= limit;
    case relation::lt:
      return value < limit;
    case relation::lte:
      return value <= limit;
    case relation::eq:
      return value == limit;
    default:
      return value != limit;
  }
}

namespace {

bool counts_rules(kind what) { return what == kind::temporal || what == kind::temporal_ordered; }

// A condition on ordered rules costs the square of their number.
void check_ordered(const rule_correlation& c, std::size_t line) {
  if (c.what != kind::temporal_ordered || c.bounds.empty()) return;
  if (c.rules.size() > limits::ordered_rules) {
    throw rule_problem{line, "a condition on the order of so many rules is not supported", true};
  }
}

void check_condition(const rule_correlation& c, std::size_t line) {
  const bool has_field = c.what != kind::event_count && !counts_rules(c.what);
  if (!counts_rules(c.what) && c.bounds.empty()) {
    throw rule_problem{line, "the condition is missing"};
  }
  if (has_field && c.fields.empty()) {
    throw rule_problem{line, "the condition names no field"};
  }
  if (has_field && c.what != kind::value_count && c.fields.size() > 1) {
    throw rule_problem{line, "the condition names more than one field"};
  }
  check_ordered(c, line);
}

// One event cannot match a rule twice, so naming it twice makes no sense.
void drop_repeated(std::vector<std::string>& names) {
  std::vector<std::string> once;
  for (std::string& name : names) {
    if (std::find(once.begin(), once.end(), name) == once.end()) once.push_back(std::move(name));
  }
  names = std::move(once);
}

}  // namespace

std::size_t rule_correlation::ordered_rules_needed() const {
  if (bounds.empty()) return rules.size();
  std::size_t needed = 1;
  for (const bound& b : bounds) {
    const bool above = b.compare == relation::gt;
    if ((!above && b.compare != relation::gte) || b.limit < 0) return 0;
    const long double least = above ? std::floor(b.limit) + 1 : std::ceil(b.limit);
    if (least > static_cast<long double>(rules.size())) return SIZE_MAX;
    needed = std::max(needed, static_cast<std::size_t>(least));
  }
  return needed;
}

void read_correlation(const yaml_node& node, rule_correlation& out) {
  if (!node.is_map()) throw rule_problem{node.line, "'correlation' is no map"};
  const std::string_view type = node.text_of("type");
  const std::size_t which = index_of(kind_names, type);
  if (which == kind_names.size()) {
    throw rule_problem{node.line, "correlation type '" + std::string(type) + "' is not supported",
                       true};
  }
  out.what = static_cast<kind>(which);
  out.rules = list_of(node, "rules");
  if (out.rules.empty()) throw rule_problem{node.line, "the correlation names no rules"};
  if (out.rules.size() > limits::correlation_rules) {
    throw rule_problem{node.line, "the correlation names too many rules"};
  }
  if (out.what != kind::temporal_ordered) drop_repeated(out.rules);
  out.group_by = list_of(node, "group-by");
  out.timespan_seconds = timespan_of(node);
  out.generate = node.text_of("generate") == "true";
  read_aliases(node, out);
  const yaml_node* const condition = node.find("condition");
  if (condition != nullptr) read_condition(*condition, out);
  check_condition(out, node.line);
}

}  // namespace zanvik::sigma
