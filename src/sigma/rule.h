// A rule as in its file: a detection, a correlation of other rules, or a filter on them.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "sigma/expression.h"
#include "sigma/field_test.h"

namespace zanvik::sigma {

enum class rule_level : unsigned char { none, informational, low, medium, high, critical };
inline constexpr std::array<std::string_view, 6> level_names{"",       "informational", "low",
                                                             "medium", "high",          "critical"};
// `none` for a text that is not a level.
rule_level level_of(std::string_view name);

struct rule_log_source {
  std::string category, product, service;
};

// `name` stands for a field that has another name in the events of each rule.
struct field_alias {
  std::string name;
  std::vector<std::pair<std::string, std::string>> by_rule;  // rule and its field
};

struct rule_correlation {
  enum class kind : unsigned char {
    event_count,
    value_count,
    temporal,
    temporal_ordered,
    value_sum,
    value_avg,
    value_percentile,
  };
  enum class relation : unsigned char { gt, gte, lt, lte, eq, neq };
  struct bound {
    relation compare;
    long double limit;
    bool holds(long double value) const;
  };
  kind what = kind::event_count;
  std::vector<std::string> rules;  // by ID or name
  std::vector<std::string> group_by;
  std::vector<field_alias> aliases;
  std::uint64_t timespan_seconds = 0;
  std::vector<bound> bounds;        // all must hold; none: as many as there are rules
  std::vector<std::string> fields;  // of the value_ kinds: what is counted or added
  bool generate = false;            // the rules it stands on are reported on their own, too

  // Of temporal_ordered: how many of its rules must come in order at least; 0 if the condition is
  // not only about that.
  std::size_t ordered_rules_needed() const;
};

struct rule {
  enum class kind : unsigned char { detection, correlation, filter };
  kind what = kind::detection;

  std::string title, id, name, status, author, license, date, modified;
  std::vector<std::string> tags;
  rule_level level = rule_level::none;
  std::string file;
  std::size_t line = 1;

  rule_log_source source;          // detection, filter
  std::vector<field_test> tests;   // detection, filter
  expression condition;            // detection, filter
  std::size_t regex_bytes = 0;     // what the expressions of its tests come to when compiled
  rule_correlation correlation;    // correlation
  std::vector<std::string> rules;  // filter: the rules it belongs to

  // Why the rule cannot run, and the line; empty if it can.
  std::string problem;
  bool unsupported = false;  // the problem is not the rule's but ours
  std::size_t problem_line = 0;
};

}  // namespace zanvik::sigma
