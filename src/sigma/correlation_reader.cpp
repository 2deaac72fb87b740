// The `correlation` part of a rule.
#include <array>
#include <charconv>

#include "sigma/rule_reader.h"

namespace zanvik::sigma {
namespace {

using kind = rule_correlation::kind;
using relation = rule_correlation::relation;

constexpr std::array<std::string_view, 4> kind_names{"event_count", "value_count", "temporal",
                                                     "temporal_ordered"};
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
  // Longer than any log reaches back, and far from overflow in units of 100 ns.
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
    const auto count = whole_number(condition.items[i].text);
    if (which == relation_names.size() || !count) {
      throw rule_problem{condition.items[i].line, "the condition compares with no whole number"};
    }
    out.bounds.push_back({static_cast<relation>(which), *count});
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

bool rule_correlation::bound::holds(std::uint64_t value) const {
  switch (compare) {
    case relation::gt:
      return value > count;
    case relation::gte:
      return value >= count;
    case relation::lt:
      return value < count;
    case relation::lte:
      return value <= count;
    case relation::eq:
      return value == count;
    default:
      return value != count;
  }
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
  out.group_by = list_of(node, "group-by");
  out.timespan_seconds = timespan_of(node);
  out.generate = node.text_of("generate") == "true";
  read_aliases(node, out);
  const bool counts = out.what == kind::event_count || out.what == kind::value_count;
  const yaml_node* const condition = node.find("condition");
  if (condition != nullptr) read_condition(*condition, out);
  if (counts && out.bounds.empty()) throw rule_problem{node.line, "the condition is missing"};
  if (out.what == kind::temporal_ordered && !out.bounds.empty()) {
    throw rule_problem{node.line, "a condition on an ordered correlation is not supported", true};
  }
  if (out.what == kind::value_count && out.fields.empty()) {
    throw rule_problem{node.line, "the condition names no field to count"};
  }
}

}  // namespace zanvik::sigma
