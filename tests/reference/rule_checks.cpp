#include "reference/rule_checks.h"

#include "base/fold_case.h"

namespace zanvik::sigma {

made_fields::made_fields(const made_event& event) {
  for (const auto& [name, value] : event) {
    const bool null = value == null_value;
    texts_.push_back(std::make_unique<std::pair<std::string, std::string>>(
        null ? "" : value, null ? "" : folded(value)));
    const field_value made{texts_.back()->first, texts_.back()->second, null};
    fields_[name].push_back(made);
    all_.push_back(made);
  }
}

const field_values& made_fields::values(std::string_view name) const {
  if (name.empty()) return all_;
  const auto found = fields_.find(name);
  return found == fields_.end() ? none_ : found->second;
}

all_ways::all_ways(const rule_set& set) {
  for (const known_rule& known : set.rules) {
    if (known.state != rule_state::runs || known.content.what != rule::kind::detection) continue;
    rules_.push_back(&known.content);
    source_ = &known.events.front();
  }
  quick_ = std::make_unique<group_matcher>(rules_);
  quick_plain_literals_ = std::make_unique<group_matcher>(rules_, true);
  state_ = std::make_unique<group_state>(*quick_, literals_);
  state_plain_literals_ = std::make_unique<group_state>(*quick_plain_literals_, literals_);
}

std::vector<std::uint32_t> all_ways::by_matcher(const group_matcher& matcher, group_state& state,
                                                const made_fields& fields) {
  std::vector<std::uint32_t> asked, matches;
  for (std::uint32_t f = 0; f < matcher.fields().size(); ++f) {
    asked.push_back(f);
    state.values[f] = fields.values(source_->field_name(matcher.fields()[f]));
  }
  const std::vector<bool> wanted(matcher.rule_count(), true);
  matcher.match(state, asked, wanted, scratch_, matches);
  return matches;
}

all_ways::answer all_ways::match(const made_event& event) {
  answer out;
  if (rules_.empty()) return out;
  const made_fields fields(event);
  for (std::uint32_t r = 0; r < rules_.size(); ++r) {
    if (plain_match(*rules_[r], *source_, fields, scratch_)) out.plain.push_back(r);
  }
  out.quick = by_matcher(*quick_, *state_, fields);
  out.quick_plain_literals = by_matcher(*quick_plain_literals_, *state_plain_literals_, fields);
  return out;
}

}  // namespace zanvik::sigma
