#include "sigma/correlation.h"

#include <algorithm>

#include "sigma/event_names.h"
#include "sigma/fold_case.h"
#include "sigma/sigma_limits.h"

namespace zanvik::sigma {
namespace {

constexpr std::uint64_t filetime_per_second = 10000000;

using kind = rule_correlation::kind;

// What a correlation calls a field, as the events of one of its rules call it.
std::string resolved(const rule_correlation& c, const rule& base, const std::string& field) {
  for (const field_alias& alias : c.aliases) {
    if (alias.name != field) continue;
    for (const auto& [rule_name, its_field] : alias.by_rule) {
      if (rule_name == base.name || rule_name == base.id) return its_field;
    }
  }
  return field;
}

bool holds(const rule_correlation& c, std::uint64_t count) {
  // A temporal one without a condition wants all of its rules.
  if (c.bounds.empty()) return count == c.rules.size();
  return std::all_of(c.bounds.begin(), c.bounds.end(),
                     [count](const auto& bound) { return bound.holds(count); });
}

}  // namespace

// A match of a rule as one correlation sees it.
struct correlator::hit {
  const remembered_event* event;
  std::size_t slot;                    // which of the correlation's rules
  std::vector<std::uint32_t> group;    // values of the group-by fields, folded
  std::vector<std::uint32_t> counted;  // values of the fields that are counted
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

void correlator::add(const event_view& event, std::size_t rule, std::uint64_t note) {
  if (events_.size() >= limits::correlated_events || text_bytes_ >= limits::correlated_text_bytes) {
    ++left_out_;
    return;
  }
  if (logs_.empty() || logs_.back() != event.source().path) logs_.push_back(event.source().path);
  events_.push_back({event.time(), note, static_cast<std::uint32_t>(logs_.size() - 1),
                     static_cast<std::uint32_t>(rule), static_cast<std::uint32_t>(values_.size())});
  const known_rule& known = set_.rules[rule];
  std::string scratch;
  for (const std::string& field : fields_[rule]) {
    // Any of the rule's sources may rename the field; the first that the event has is taken.
    std::vector<std::uint32_t> found = fields_of_name(event.shape(), field);
    for (const event_source& source : known.events) {
      if (!found.empty()) break;
      found = fields_of_name(event.shape(), source.field_name(field));
    }
    const bool absent = found.empty() || (event.shape().fields[found[0]].parts.size() == 1 &&
                                          event.value(found[0]).absent());
    values_.push_back(absent ? 0
                             : intern(event.text(static_cast<std::int32_t>(found[0]), scratch)));
  }
}

std::uint32_t correlator::value_of(const remembered_event& event, std::string_view field) const {
  const auto& fields = fields_[event.rule];
  const auto found = std::find(fields.begin(), fields.end(), field);
  return found == fields.end()
             ? 0
             : values_[event.values + static_cast<std::size_t>(found - fields.begin())];
}

std::vector<correlator::hit> correlator::hits_of(std::size_t rule) const {
  const rule_correlation& c = set_.rules[rule].content.correlation;
  std::vector<hit> out;
  for (std::size_t slot = 0; slot < c.rules.size(); ++slot) {
    const auto base = static_cast<std::size_t>(set_.find(c.rules[slot]));
    const auto add = [&](const remembered_event& event) {
      hit h{&event, slot, {}, {}};
      for (const std::string& field : c.group_by) {
        h.group.push_back(value_of(event, resolved(c, set_.rules[base].content, field)));
      }
      for (const std::string& field : c.fields) {
        h.counted.push_back(value_of(event, resolved(c, set_.rules[base].content, field)));
      }
      if (std::find(h.group.begin(), h.group.end(), 0U) == h.group.end()) out.push_back(h);
    };
    if (const auto below = matches_.find(base); below != matches_.end()) {
      for (const correlation_match& m : below->second) add(m.event);
    } else {
      for (const remembered_event& event : events_) {
        if (event.rule == base) add(event);
      }
    }
  }
  std::stable_sort(out.begin(), out.end(), [](const hit& a, const hit& b) {
    return a.group != b.group ? a.group < b.group : a.event->time < b.event->time;
  });
  return out;
}

namespace {

// What a correlation counts, while hits come into the window and go.
class window_count {
 public:
  explicit window_count(kind what) : what_(what) {}

  template <typename Hit>
  void change(const Hit& h, int by) {
    hits_ += static_cast<std::uint64_t>(by);
    std::vector<std::uint32_t> key = h.counted;
    if (what_ == kind::temporal) key = {static_cast<std::uint32_t>(h.slot)};
    if (what_ == kind::event_count) return;
    // A value that is not there is none to count.
    if (what_ == kind::value_count && std::find(key.begin(), key.end(), 0U) != key.end()) return;
    std::int64_t& count = values_[key];
    count += by;
    if (count == 0) values_.erase(key);
  }

  std::uint64_t value() const {
    return what_ == kind::event_count ? hits_ : static_cast<std::uint64_t>(values_.size());
  }

 private:
  kind what_;
  std::uint64_t hits_ = 0;
  std::map<std::vector<std::uint32_t>, std::int64_t> values_;
};

// Spans of hits, first and last, in which rules come in their order: for each hit that ends such an
// order, the latest start of one.
template <typename Hits>
std::vector<std::pair<std::size_t, std::size_t>> ordered_spans(const Hits& hits, std::size_t slots,
                                                               std::uint64_t span) {
  std::vector<std::pair<std::size_t, std::size_t>> out;
  constexpr std::size_t none = SIZE_MAX;
  std::vector<std::size_t> start(slots, none);  // of the latest order up to each rule
  for (std::size_t i = 0; i < hits.size(); ++i) {
    const std::size_t slot = hits[i].slot;
    start[slot] = slot == 0 ? i : start[slot - 1];
    if (slot + 1 != slots || start[slot] == none) continue;
    if (hits[i].event->time - hits[start[slot]].event->time <= span) {
      out.emplace_back(start[slot], i);
    }
  }
  return out;
}

// Spans of hits that are windows, lie in no other one, and pass.
template <typename Hits>
std::vector<std::pair<std::size_t, std::size_t>> counted_spans(const Hits& hits,
                                                               const rule_correlation& c,
                                                               std::uint64_t span) {
  std::vector<std::pair<std::size_t, std::size_t>> out;
  window_count count(c.what);
  std::size_t end = 0;  // behind the window
  for (std::size_t i = 0; i < hits.size(); ++i) {
    if (i != 0) count.change(hits[i - 1], -1);
    const std::size_t old_end = end;
    while (end < hits.size() && hits[end].event->time - hits[i].event->time <= span) {
      count.change(hits[end++], 1);
    }
    if (end > old_end && holds(c, count.value())) out.emplace_back(i, end - 1);
  }
  return out;
}

// Where in the span, read from its start, the condition came to hold.
template <typename Hits>
std::size_t completing_hit(const Hits& hits, const rule_correlation& c,
                           std::pair<std::size_t, std::size_t> span) {
  if (c.what == kind::temporal_ordered) return span.second;
  window_count count(c.what);
  for (std::size_t i = span.first; i < span.second; ++i) {
    count.change(hits[i], 1);
    if (holds(c, count.value())) return i;
  }
  return span.second;
}

}  // namespace

void correlator::find_in_group(std::size_t rule, const std::vector<hit>& hits) {
  const rule_correlation& c = set_.rules[rule].content.correlation;
  const std::uint64_t span = c.timespan_seconds * filetime_per_second;
  const auto spans = c.what == kind::temporal_ordered ? ordered_spans(hits, c.rules.size(), span)
                                                      : counted_spans(hits, c, span);
  auto& out = matches_[rule];
  for (std::size_t i = 0; i < spans.size();) {
    correlation_match match;
    const std::size_t completed = completing_hit(hits, c, spans[i]);
    const std::size_t begin = spans[i].first;
    std::size_t end = spans[i].second;
    for (++i; i < spans.size() && spans[i].first <= end; ++i) end = spans[i].second;
    match.rule = rule;
    match.event = *hits[completed].event;
    match.first = hits[begin].event->time;
    match.last = hits[end].event->time;
    match.events = end - begin + 1;
    for (std::size_t g = 0; g < c.group_by.size(); ++g) {
      match.group.emplace_back(c.group_by[g], texts_[hits[begin].group[g]]);
    }
    out.push_back(std::move(match));
  }
}

void correlator::find_matches(std::size_t rule, std::vector<hit>& hits) {
  matches_[rule];
  for (std::size_t i = 0; i < hits.size();) {
    std::vector<hit> group;
    const std::vector<std::uint32_t> key = hits[i].group;
    for (; i < hits.size() && hits[i].group == key; ++i) group.push_back(std::move(hits[i]));
    find_in_group(rule, group);
  }
  auto& out = matches_[rule];
  std::stable_sort(out.begin(), out.end(),
                   [](const auto& a, const auto& b) { return a.event.time < b.event.time; });
}

std::vector<correlation_match> correlator::finish() {
  for (const std::size_t rule : set_.correlation_order) {
    if (set_.rules[rule].state != rule_state::runs) continue;
    std::vector<hit> hits = hits_of(rule);
    find_matches(rule, hits);
  }
  std::vector<correlation_match> out;
  for (const auto& [rule, matches] : matches_) {
    if (!set_.rules[rule].reported) continue;
    out.insert(out.end(), matches.begin(), matches.end());
  }
  return out;
}

}  // namespace zanvik::sigma
