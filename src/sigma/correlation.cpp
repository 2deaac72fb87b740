#include "sigma/correlation.h"

#include <algorithm>
#include <cmath>
#include <tuple>

#include "sigma/event_names.h"
#include "base/fold_case.h"
#include "sigma/sigma_limits.h"

namespace zanvik::sigma {
namespace {

// A correlation's name for a field, and the name in the events of one of its rules.
std::string resolved(const rule_correlation& c, const rule& base, const std::string& field) {
  for (const field_alias& alias : c.aliases) {
    if (alias.name != field) continue;
    for (const auto& [rule_name, its_field] : alias.by_rule) {
      if (rule_name == base.name || rule_name == base.id) return its_field;
    }
  }
  return field;
}

std::vector<std::string> resolved(const rule_correlation& c, const rule& base,
                                  const std::vector<std::string>& fields) {
  std::vector<std::string> out;
  for (const std::string& field : fields) out.push_back(resolved(c, base, field));
  return out;
}

}  // namespace

// Numbers, from 1, for lists of values; 0 for a list in which a value is absent.
class correlator::tuple_numbers {
 public:
  std::uint32_t of(const std::vector<std::uint32_t>& values) {
    if (std::find(values.begin(), values.end(), 0U) != values.end()) return 0;
    const auto [it, fresh] =
        numbers_.try_emplace(values, static_cast<std::uint32_t>(tuples_.size() + 1));
    if (fresh) tuples_.push_back(&it->first);
    return it->second;
  }
  const std::vector<std::uint32_t>& values(std::uint32_t number) const {
    return *tuples_[number - 1];
  }

 private:
  std::map<std::vector<std::uint32_t>, std::uint32_t> numbers_;
  std::vector<const std::vector<std::uint32_t>*> tuples_;
};

correlator::correlator(const rule_set& set)
    : set_(set), bases_(set.rules.size()), fields_(set.rules.size()) {
  for (const std::size_t i : set.correlation_order) {
    if (set.rules[i].state != rule_state::runs) continue;
    const rule_correlation& c = set.rules[i].content.correlation;
    for (const std::string& name : c.rules) {
      const auto base = static_cast<std::size_t>(set.find(name));
      need(base, "", 0);
      const rule& content = set.rules[base].content;
      for (const std::string& field : c.group_by) need(base, resolved(c, content, field), 0);
      for (const std::string& field : c.fields) need(base, resolved(c, content, field), 0);
    }
  }
}

// Notes that `field` is asked of the rule's events; of a correlation's events, of all below it.
void correlator::need(std::size_t rule, const std::string& field, unsigned depth) {
  const known_rule& known = set_.rules[rule];
  if (known.content.what == rule::kind::correlation) {
    if (depth == limits::correlation_depth) return;
    for (const std::string& name : known.content.correlation.rules) {
      need(static_cast<std::size_t>(set_.find(name)), field, depth + 1);
    }
    return;
  }
  bases_[rule] = true;
  auto& fields = fields_[rule];
  if (!field.empty() && std::find(fields.begin(), fields.end(), field) == fields.end()) {
    fields.push_back(field);
  }
}

std::uint32_t correlator::intern(std::string_view text) {
  std::string key = folded(text);
  const auto found = numbers_.find(key);
  if (found != numbers_.end()) return found->second;
  text_bytes_ += key.size() + text.size();
  texts_.emplace_back(text);
  const auto number = static_cast<std::uint32_t>(texts_.size() - 1);
  numbers_.emplace(std::move(key), number);
  return number;
}

bool correlator::has_room() const {
  return held_ < limits::correlated_events && values_.size() < limits::correlated_values &&
         text_bytes_ < limits::correlated_text_bytes;
}

std::vector<std::optional<std::string>> correlator::values_of(const event_view& event,
                                                             std::size_t rule) const {
  std::vector<std::optional<std::string>> values;
  std::string scratch;
  for (const std::string& field : fields_[rule]) {
    // Any of the rule's sources may rename the field; the first that the event has is used.
    std::vector<std::uint32_t> found = fields_of_name(event.shape(), field);
    for (const event_source& source : set_.rules[rule].events) {
      if (!found.empty()) break;
      found = fields_of_name(event.shape(), source.field_name(field));
    }
    const bool absent = found.empty() || (event.shape().fields[found[0]].parts.size() == 1 &&
                                          event.value(found[0]).absent());
    auto& value = values.emplace_back();
    if (!absent) value = event.text(static_cast<std::int32_t>(found[0]), scratch);
  }
  return values;
}

void correlator::add(std::size_t rule, std::uint64_t time, const std::string& log,
                     std::span<const std::optional<std::string>> values, std::uint64_t note) {
  if (!has_room()) {
    ++left_out_;
    return;
  }
  ++held_;
  if (logs_.empty() || logs_.back() != log) logs_.push_back(log);
  events_[rule].push_back({time, note, 1, event_, static_cast<std::uint32_t>(logs_.size() - 1),
                           static_cast<std::uint32_t>(rule),
                           static_cast<std::uint32_t>(values_.size())});
  if (identity_ != event_identity{}) identities_[rule].push_back(identity_);
  for (const auto& value : values) values_.push_back(value ? intern(*value) : 0);
}

std::uint32_t correlator::value_of(const remembered_event& event, std::string_view field) const {
  const auto& fields = fields_[event.rule];
  const auto found = std::find(fields.begin(), fields.end(), field);
  return found == fields.end()
             ? 0
             : values_[event.values + static_cast<std::size_t>(found - fields.begin())];
}

std::vector<std::uint32_t> correlator::kept_values(const remembered_event& event,
                                                   const std::vector<std::string>& fields) const {
  std::vector<std::uint32_t> out;
  for (const std::string& field : fields) out.push_back(value_of(event, field));
  return out;
}

// The matches of the rules that a correlation uses, for events in some group. False if all
// correlations together would examine too many.
bool correlator::add_hits(std::size_t rule, tuple_numbers& groups, tuple_numbers& counted,
                          std::vector<correlation_hit>& hits,
                          std::vector<remembered_event>& events) {
  const rule_correlation& c = set_.rules[rule].content.correlation;
  for (std::size_t slot = 0; slot < c.rules.size(); ++slot) {
    const auto base = static_cast<std::size_t>(set_.find(c.rules[slot]));
    const auto& content = set_.rules[base].content;
    const std::vector<std::string> group_by = resolved(c, content, c.group_by);
    const std::vector<std::string> fields = resolved(c, content, c.fields);
    const auto add = [&](const remembered_event& event) {
      const std::uint32_t group = groups.of(kept_values(event, group_by));
      if (group == 0) return;
      hits.push_back({event.time, static_cast<std::uint32_t>(events.size()),
                      static_cast<std::uint32_t>(slot), group, counted.of(kept_values(event, fields)),
                      false});
      events.push_back(event);
    };
    const auto below = matches_.find(base);
    const auto& found = events_[base];
    looks_ += below != matches_.end() ? below->second.size() : found.size();
    if (looks_ > limits::correlated_looks) return false;
    if (below != matches_.end()) {
      for (const correlation_match& m : below->second) add(m.event);
    } else {
      for (const remembered_event& event : found) add(event);
    }
  }
  return true;
}

void correlator::find_matches(std::size_t rule) {
  const rule_correlation& c = set_.rules[rule].content.correlation;
  auto& out = matches_[rule];
  tuple_numbers groups, counted;
  std::vector<correlation_hit> hits;
  std::vector<remembered_event> events;
  if (!add_hits(rule, groups, counted, hits, events)) {
    not_worked_out_.push_back(rule);
    return;
  }
  const auto key = [&](const correlation_hit& h) {
    return std::tuple(h.group, h.time, events[h.event].event, h.slot);
  };
  std::sort(hits.begin(), hits.end(),
            [&](const auto& a, const auto& b) { return key(a) < key(b); });
  const auto number = [&](std::uint32_t value) {
    const auto found = number_of(texts_[counted.values(value)[0]]);
    return found ? *found : std::nanl("");
  };
  for (std::size_t begin = 0, end = 0; begin < hits.size(); begin = end) {
    for (end = begin + 1; end < hits.size() && hits[end].group == hits[begin].group; ++end) {
      hits[end].repeats = events[hits[end].event].event == events[hits[end - 1].event].event;
    }
    const std::span<const correlation_hit> group(&hits[begin], end - begin);
    for (const hit_span& span : spans_that_hold(c, group, number)) {
      correlation_match match{rule,
                              events[group[span.completed].event],
                              group[span.first].time,
                              group[span.last].time,
                              span.events,
                              {}};
      for (std::size_t g = 0; g < c.group_by.size(); ++g) {
        match.group.emplace_back(c.group_by[g], texts_[groups.values(group[0].group)[g]]);
      }
      out.push_back(std::move(match));
    }
  }
  std::stable_sort(out.begin(), out.end(), [](const auto& a, const auto& b) {
    return a.event.time != b.event.time ? a.event.time < b.event.time
                                        : a.event.event < b.event.event;
  });
}

// Leaves the first of the copies of each event, with their number.
void correlator::drop_copies() {
  for (const auto& [rule, identities] : identities_) {
    std::map<event_identity, std::size_t> first;  // where it is in `once`
    std::vector<remembered_event> once;
    const auto& all = events_[rule];
    for (std::size_t i = 0; i < all.size(); ++i) {
      const auto [known, fresh] = first.try_emplace(identities[i], once.size());
      if (fresh) {
        once.push_back(all[i]);
      } else {
        ++once[known->second].copies;
      }
    }
    events_[rule] = std::move(once);
  }
  identities_.clear();
}

std::vector<correlation_match> correlator::finish() {
  drop_copies();
  for (const std::size_t rule : set_.correlation_order) {
    if (set_.rules[rule].state == rule_state::runs) find_matches(rule);
  }
  std::vector<correlation_match> out;
  for (const auto& [rule, matches] : matches_) {
    if (!set_.rules[rule].reported) continue;
    out.insert(out.end(), matches.begin(), matches.end());
  }
  return out;
}

}  // namespace zanvik::sigma
