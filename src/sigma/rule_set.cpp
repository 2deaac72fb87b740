#include "sigma/rule_set.h"

#include <algorithm>
#include <unordered_set>

#include "base/text.h"
#include "base/fold_case.h"
#include "sigma/rule_files.h"
#include "sigma/sigma_limits.h"

namespace zanvik::sigma {

std::string_view name_of(rule_state state) {
  switch (state) {
    case rule_state::runs:
      return "runs";
    case rule_state::not_applicable:
      return "not applicable";
    case rule_state::unsupported:
      return "not supported";
    case rule_state::broken:
      return "broken";
    default:
      return "not wanted";
  }
}

std::size_t rule_set::running() const {
  return static_cast<std::size_t>(std::count_if(rules.begin(), rules.end(), [](const auto& r) {
    return r.state == rule_state::runs && r.content.what == rule::kind::detection;
  }));
}

std::ptrdiff_t rule_set::find(const std::string& id_or_name) const {
  const auto found = by_name.find(id_or_name);
  return found == by_name.end() ? -1 : static_cast<std::ptrdiff_t>(found->second);
}

namespace {

bool is_wanted(const rule& r, const rule_choice& choice) {
  const auto has = [](const std::vector<std::string>& list, const std::string& value) {
    return std::find(list.begin(), list.end(), value) != list.end();
  };
  if (r.level < choice.min_level || (!choice.statuses.empty() && !has(choice.statuses, r.status)) ||
      std::any_of(choice.excluded_ids.begin(), choice.excluded_ids.end(),
                  [&](const std::string& id) { return equal_nocase(id, r.id); })) {
    return false;
  }
  if (choice.tags.empty()) return true;
  for (const std::string& wanted : choice.tags) {
    text_pattern pattern = text_pattern::parse(wanted);
    pattern.fold();
    for (const std::string& tag : r.tags) {
      if (pattern.matches(folded(tag))) return true;
    }
  }
  return false;
}

void set_state(known_rule& known, rule_state state, std::string reason) {
  known.state = state;
  known.reason = std::move(reason);
}

void classify(known_rule& known, const rule_choice& choice, const log_source_table& sources) {
  const rule& r = known.content;
  if (!r.problem.empty()) {
    set_state(known, r.unsupported ? rule_state::unsupported : rule_state::broken, r.problem);
    return;
  }
  if (r.what != rule::kind::correlation) {
    std::string reason;
    known.events = sources.find(r.source, reason);
    if (known.events.empty()) {
      set_state(known, rule_state::not_applicable, reason);
      return;
    }
  }
  if (r.what != rule::kind::filter && !is_wanted(r, choice)) {
    // Correlations may still stand on it.
    known.reported = false;
    set_state(known, rule_state::not_wanted, "left out by the options");
  }
}

// Puts the filter into a rule: it suppresses what its condition matches.
void apply_filter(const rule& filter, rule& target) {
  const std::size_t first = target.tests.size();
  target.tests.insert(target.tests.end(), filter.tests.begin(), filter.tests.end());
  const auto moved = [first](const auto& self, expression e) -> expression {
    if (e.what == expression::kind::test) e.test += first;
    for (expression& part : e.parts) part = self(self, std::move(part));
    return e;
  };
  expression& condition = target.condition;
  if (condition.what != expression::kind::all_of) {
    condition = {expression::kind::all_of, {std::move(condition)}, 0};
  }
  // Beside one another: many filters may be on one rule, and what evaluates is recursive.
  condition.parts.push_back(expression::negate(moved(moved, filter.condition)));
}

bool source_fits(const rule_log_source& filter, const rule_log_source& rule_source) {
  const auto fits = [](const std::string& wanted, const std::string& has) {
    return wanted.empty() || wanted == has;
  };
  return fits(filter.category, rule_source.category) && fits(filter.product, rule_source.product) &&
         fits(filter.service, rule_source.service);
}

void apply_filters(rule_set& set) {
  std::size_t tests = 0;  // copied into rules
  for (known_rule& filter : set.rules) {
    if (filter.content.what != rule::kind::filter || filter.state != rule_state::runs) continue;
    bool applied = false;
    for (const std::string& name : filter.content.rules) {
      const std::ptrdiff_t target = set.find(name);
      rule* const content =
          target < 0 ? nullptr : &set.rules[static_cast<std::size_t>(target)].content;
      std::string why;
      if (content == nullptr) {
        why = "no rule " + name;
      } else if (content->what != rule::kind::detection || !content->problem.empty()) {
        why = "no detection that runs: " + name;
      } else if (!source_fits(filter.content.source, content->source)) {
        why = "another log source: " + name;
      } else if ((tests += filter.content.condition.size()) > limits::filter_steps) {
        why = "too many filters before: " + name;
      } else {
        apply_filter(filter.content, *content);
        applied = true;
      }
      if (!why.empty()) filter.reason += (filter.reason.empty() ? "" : ", ") + why;
    }
    if (!applied) filter.state = rule_state::not_applicable;
  }
}

// Whether all that a correlation stands on has been settled; what is missing ends it.
bool is_ready(const rule_set& set, known_rule& known, const std::vector<bool>& settled) {
  for (const std::string& name : known.content.correlation.rules) {
    const std::ptrdiff_t found = set.find(name);
    if (found < 0) {
      set_state(known, rule_state::broken, "there is no rule '" + name + "'");
      return true;
    }
    if (!settled[static_cast<std::size_t>(found)]) return false;
    const known_rule& base = set.rules[static_cast<std::size_t>(found)];
    if (base.content.what == rule::kind::filter) {
      set_state(known, rule_state::broken, "'" + name + "' is a filter");
      return true;
    }
    if (base.state != rule_state::runs && base.state != rule_state::not_wanted) {
      set_state(known, base.state, "rule '" + name + "' does not run");
      return true;
    }
  }
  return true;
}

// Settles correlations from below: those that stand on detections first. What is left then stands
// on itself.
void settle_correlations(rule_set& set) {
  std::vector<bool> settled(set.rules.size());
  for (std::size_t i = 0; i < set.rules.size(); ++i) {
    settled[i] = set.rules[i].content.what != rule::kind::correlation ||
                 !set.rules[i].content.problem.empty();
  }
  for (std::size_t depth = 0; depth < limits::correlation_depth; ++depth) {
    std::vector<std::size_t> ready;
    for (std::size_t i = 0; i < set.rules.size(); ++i) {
      if (!settled[i] && is_ready(set, set.rules[i], settled)) ready.push_back(i);
    }
    for (const std::size_t i : ready) {
      settled[i] = true;
      set.correlation_order.push_back(i);
    }
  }
  for (std::size_t i = 0; i < set.rules.size(); ++i) {
    if (!settled[i])
      set_state(set.rules[i], rule_state::broken,
                "correlations stand on themselves, or too many on one another");
  }
}

// Rules that correlations stand on run for them, and are reported on their own only where one of
// them says so.
void mark_bases(rule_set& set) {
  std::vector<bool> serves(set.rules.size()), generated(set.rules.size());
  // From above, as a correlation may be there for another one's sake only.
  for (auto i = set.correlation_order.rbegin(); i != set.correlation_order.rend(); ++i) {
    const known_rule& known = set.rules[*i];
    if (known.state != rule_state::runs) continue;
    for (const std::string& name : known.content.correlation.rules) {
      const auto base = static_cast<std::size_t>(set.find(name));
      serves[base] = true;
      if (known.content.correlation.generate) generated[base] = true;
      if (set.rules[base].state == rule_state::not_wanted) {
        set_state(set.rules[base], rule_state::runs, "");
        set.rules[base].reported = false;
      }
    }
  }
  for (std::size_t i = 0; i < set.rules.size(); ++i) {
    if (serves[i] && !generated[i]) set.rules[i].reported = false;
  }
}

// What all rules share is limited; which rules go without is a matter of their order.
void limit_shared(rule_set& set) {
  std::size_t regex_bytes = 0;
  std::unordered_set<std::string_view, keyed_text_hash> fields;
  for (known_rule& known : set.rules) {
    const rule& r = known.content;
    if (known.state != rule_state::runs) continue;
    if (regex_bytes + r.regex_bytes > limits::all_regex_bytes) {
      set_state(known, rule_state::unsupported, "the rules have too many regular expressions");
      continue;
    }
    regex_bytes += r.regex_bytes;
    for (const field_test& test : r.tests) {
      if (fields.size() >= limits::all_fields && !fields.contains(test.field)) {
        set_state(known, rule_state::unsupported, "the rules ask for too many fields");
      } else {
        fields.insert(test.field);
        fields.insert(test.other);
      }
    }
  }
}

void settle(std::vector<file_rules>&& files, const rule_choice& choice,
            const log_source_table& sources, rule_set& out) {
  for (file_rules& file : files) {
    for (rule& r : file) {
      known_rule known;
      known.content = std::move(r);
      classify(known, choice, sources);
      out.rules.push_back(std::move(known));
    }
  }
  out.files += files.size();
  for (std::size_t i = 0; i < out.rules.size(); ++i) {
    const rule& r = out.rules[i].content;
    // Of two rules with one ID, the first is meant.
    if (!r.id.empty()) out.by_name.emplace(r.id, i);
    if (!r.name.empty()) out.by_name.emplace(r.name, i);
  }
  limit_shared(out);
  apply_filters(out);
  settle_correlations(out);
  mark_bases(out);
  for (const known_rule& known : out.rules) {
    if (known.state != rule_state::broken) continue;
    const std::size_t line = std::max<std::size_t>(
        known.content.problem.empty() ? known.content.line : known.content.problem_line, 1);
    out.messages.push_back(
        printable_name(known.content.file + ":" + std::to_string(line) + ": " + known.reason));
  }
}

}  // namespace

std::string load_rules(const std::vector<std::string>& paths, const rule_choice& choice,
                       const log_source_table& sources, rule_set& out) {
  std::vector<std::string> files;
  std::string missing;
  if (!list_rule_files(paths, files, out.messages, missing)) {
    return "no such file or folder: " + missing;
  }
  settle(read_rule_files(files, choice.placeholders), choice, sources, out);
  if (out.rules.empty()) return "there is no rule in " + paths.front();
  return {};
}

void load_rule_texts(const std::vector<std::pair<std::string, std::string>>& texts,
                     const rule_choice& choice, const log_source_table& sources, rule_set& out) {
  std::vector<file_rules> files;
  for (const auto& [name, text] : texts) {
    files.push_back(read_rule_text(name, text, choice.placeholders));
  }
  settle(std::move(files), choice, sources, out);
}

}  // namespace zanvik::sigma
