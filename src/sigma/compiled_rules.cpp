#include "sigma/compiled_rules.h"

#include <algorithm>
#include <chrono>
#include <map>

#include "base/fold_case.h"

namespace zanvik::sigma {

compiled_rules::compiled_rules(const rule_set& set, bool plain_literals)
    : set_(set), plain_literals_(plain_literals) {
  std::map<std::vector<std::string>, rule_group*> by_source;
  for (std::size_t i = 0; i < set.rules.size(); ++i) {
    const known_rule& known = set.rules[i];
    if (known.state != rule_state::runs || known.content.what != rule::kind::detection) continue;
    const rule_log_source& source = known.content.source;
    rule_group*& group = by_source[{source.category, source.product, source.service}];
    if (group == nullptr) {
      groups_.push_back(std::make_unique<rule_group>());
      group = groups_.back().get();
      group->events = known.events;
    }
    group->rules.push_back(i);
  }
}

void compiled_rules::compile(rule_group& group) {
  const auto start = std::chrono::steady_clock::now();
  std::vector<const rule*> rules;
  for (const std::size_t r : group.rules) rules.push_back(&set_.rules[r].content);
  group.matcher = std::make_unique<group_matcher>(rules, plain_literals_);
  const std::chrono::nanoseconds spent = std::chrono::steady_clock::now() - start;
  nanoseconds_compiling_ += spent.count();
}

std::size_t compiled_rules::compiled() const {
  std::size_t count = 0;
  for (const auto& group : groups_) count += group->matcher ? group->rules.size() : 0;
  return count;
}

std::vector<kind_part> compiled_rules::parts_for(std::string_view channel,
                                                 std::string_view provider,
                                                 std::string_view event_id) {
  const std::string folded_channel = folded(channel), folded_provider = folded(provider);
  const std::string folded_id = folded(event_id);
  const field_values channels{{channel, folded_channel, false}};
  const field_values providers{{provider, folded_provider, false}};
  const field_values ids{{event_id, folded_id, false}};
  std::vector<kind_part> out;
  test_scratch scratch;
  for (const auto& group : groups_) {
    for (const event_source& source : group->events) {
      if (!concerns(source, folded_channel, folded_provider, event_id_of(event_id))) continue;
      std::call_once(group->compiled, [&] { compile(*group); });
      const auto known = [&](std::string_view rule_field) -> const field_values* {
        const std::string_view name = source.field_name(rule_field);
        if (name == "EventID" && !event_id.empty()) return &ids;
        if (name == "Channel" && !channel.empty()) return &channels;
        return name == "Provider_Name" && !provider.empty() ? &providers : nullptr;
      };
      kind_part part{group.get(), &source, {}, {}};
      const group_matcher& matcher = *group->matcher;
      for (std::size_t r = 0; r < matcher.rule_count(); ++r) {
        part.wanted.push_back(matcher.may_match(r, known, scratch));
        if (!part.wanted.back()) continue;
        const auto& fields = matcher.fields_of(r);
        part.asked.insert(part.asked.end(), fields.begin(), fields.end());
      }
      std::sort(part.asked.begin(), part.asked.end());
      part.asked.erase(std::unique(part.asked.begin(), part.asked.end()), part.asked.end());
      if (!part.asked.empty()) out.push_back(std::move(part));
    }
  }
  return out;
}

}  // namespace zanvik::sigma
