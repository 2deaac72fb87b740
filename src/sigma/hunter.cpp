#include "sigma/hunter.h"

#include <algorithm>

#include "sigma/event_names.h"
#include "base/fold_case.h"
#include "sigma/sigma_limits.h"

namespace zanvik::sigma {

// A part of a kind, and the memory of this thread for it.
struct hunter::kind_part_use {
  kind_part part;
  group_state* state = nullptr;
};

// Events of one channel, provider and event ID.
struct hunter::kind {
  std::string channel;
  std::vector<kind_part_use> parts;
  std::uint64_t events = 0;
};

// Events of one shape and one kind.
struct hunter::plan_use {
  // Where the values of a part's fields are.
  struct part_fields {
    std::vector<std::uint32_t> asked;               // of `kind_part::asked`: what the shape has
    std::vector<std::vector<std::uint32_t>> from;   // beside these: its fields
    std::vector<std::vector<std::uint32_t>> where;  // beside `event_source::where`
  };
  std::string key;  // raw bytes of channel, provider and ID
  kind* what = nullptr;
  std::vector<part_fields> parts;
};

// What is known of events of one shape.
struct hunter::shape_plan {
  std::uint64_t id = 0;
  std::vector<plan_use> uses;
  std::size_t last = 0;  // of `uses`, that the event before had
};

namespace {

constexpr system_member kind_members[] = {system_member::channel, system_member::provider_name,
                                          system_member::event_id};

std::string_view bytes_of(const event_value& value) {
  return {reinterpret_cast<const char*>(value.data), value.size};
}

// The bytes that an event's kind depends on, each value with its type and size.
std::string key_of(const event_view& event) {
  std::string key;
  for (const system_member member : kind_members) {
    const event_value value = event.value(member);
    key += std::to_string(value.type) + ' ' + std::to_string(value.size) + ' ';
    key += bytes_of(value);
  }
  return key;
}

// Names that a crafted log invents are eventually counted together.
void add_channel(std::map<std::string, std::uint64_t>& counts, const std::string& channel,
                 std::uint64_t count, std::size_t most) {
  const bool fits = counts.size() < most || counts.contains(channel);
  counts[fits ? channel : std::string("(others)")] += count;
}

}  // namespace

hunter::hunter(compiled_rules& rules, match_callback on_match)
    : rules_(rules), on_match_(std::move(on_match)) {}

hunter::~hunter() = default;

hunter::shape_plan& hunter::plan_for(const event_shape& shape) {
  if (shape.index >= plans_.size()) plans_.resize(shape.index + 1);
  auto& plan = plans_[shape.index];
  if (!plan) plan = std::make_unique<shape_plan>();
  if (plan->id != shape.id || shape.once) {
    *plan = {};
    plan->id = shape.id;
  }
  return *plan;
}

hunter::kind& hunter::find_kind(const event_view& event) {
  std::string channel_scratch, provider_scratch, id_scratch;
  const std::string_view channel = channel_of(event, channel_scratch);
  const std::string_view provider = event.text(system_member::provider_name, provider_scratch);
  const std::string_view id = event.text(system_member::event_id, id_scratch);
  std::string key(channel);
  key += '\0';
  key += provider;
  key += '\0';
  key += id;
  auto& known = kinds_[std::move(key)];
  if (known) return *known;
  known = std::make_unique<kind>();
  known->channel = channel.substr(0, limits::counted_channel_bytes);
  for (kind_part& part : rules_.parts_for(channel, provider, id)) {
    auto& state = states_[part.group];
    if (!state) state = std::make_unique<group_state>(*part.group->matcher, literals_);
    known->parts.push_back({std::move(part), state.get()});
  }
  return *known;
}

void hunter::forget_kinds() {
  take_unconcerned();
  plans_.clear();
  kinds_.clear();
}

hunter::plan_use& hunter::use_of(const event_view& event, shape_plan& plan) {
  key_ = key_of(event);
  if (plan.last < plan.uses.size() && key_ == plan.uses[plan.last].key) {
    return plan.uses[plan.last];
  }
  for (plan.last = 0; plan.last < plan.uses.size(); ++plan.last) {
    if (key_ == plan.uses[plan.last].key) return plan.uses[plan.last];
  }
  if (plan.uses.size() == limits::kinds_of_shape) plan.uses.clear();
  plan.last = plan.uses.size();
  plan.uses.push_back({key_, &find_kind(event), {}});
  plan_use& use = plan.uses.back();
  if (use.what->parts.empty()) return use;
  const shape_names known(event.shape());
  for (const kind_part_use& part : use.what->parts) {
    plan_use::part_fields fields;
    const event_source& source = *part.part.source;
    const auto& names = part.part.group->matcher->fields();
    for (const std::uint32_t f : part.part.asked) {
      std::vector<std::uint32_t> from = known.find(source.field_name(names[f]));
      if (from.empty()) continue;
      fields.asked.push_back(f);
      fields.from.push_back(std::move(from));
    }
    for (const field_test& test : source.where) {
      fields.where.push_back(known.find(source.field_name(test.field)));
    }
    use.parts.push_back(std::move(fields));
  }
  return use;
}

void hunter::append_value(rendered& out, const event_value& value) {
  if (out.values.size() == out.texts.size()) out.texts.emplace_back();
  auto& [text, lower] = out.texts[out.values.size()];
  text.clear();
  append_text(text, value);
  lower.clear();
  append_folded(lower, text);
  out.values.push_back({{}, {}, value.absent()});
}

const field_values& hunter::render(const event_view& event, std::uint32_t field) {
  if (fields_.size() <= field) fields_.resize(field + 1);
  rendered& out = fields_[field];
  if (out.event == events_) return out.values;
  out.event = events_;
  out.values.clear();
  const value_parts& parts = event.shape().fields[field].parts;
  event_value value = event.value(field);
  if (parts.size() != 1) {
    std::string joined;
    const std::string_view text = event.text(static_cast<std::int32_t>(field), joined);
    append_value(out, {reinterpret_cast<const std::byte*>(text.data()),
                       static_cast<std::uint32_t>(text.size()), literal_type, 0});
  } else if (value.is_array()) {
    event_value item;
    while (next_item(value, item)) append_value(out, item);
  } else {
    append_value(out, value);
  }
  // Only now, because the texts may have moved.
  for (std::size_t i = 0; i < out.values.size(); ++i) {
    out.values[i].text = out.texts[i].first;
    out.values[i].folded = out.texts[i].second;
  }
  return out.values;
}

void hunter::collect(const event_view& event, const std::vector<std::uint32_t>& fields,
                     field_values& out) {
  out.clear();
  for (const std::uint32_t field : fields) {
    const field_values& more = render(event, field);
    out.insert(out.end(), more.begin(), more.end());
  }
}

bool hunter::passes_where(const event_view& event, const event_source& source,
                          const std::vector<std::vector<std::uint32_t>>& where) {
  return evaluate(source.condition, [&](std::size_t test) {
    field_values values;
    collect(event, where[test], values);
    return field_passes(source.where[test], values, {}, scratch_);
  });
}

void hunter::start_part() {
  take_unconcerned();
  counts_ = {};
  part_began_ = events_;
  for (const auto& [group, state] : states_) state->skipped.assign(state->skipped.size(), false);
}

// A rule that would be slow on a part is skipped for the rest of it.
void hunter::count_given_up(const rule_group& group, group_state& state) {
  for (const std::uint32_t r : state.gave_up) {
    const std::size_t rule = group.rules[r];
    if (++counts_.gave_up[rule] != limits::given_up_in_part) continue;
    state.skipped[r] = true;
    counts_.left_out[rule] = 1;
  }
}

void hunter::on_event(const event_view& event) {
  ++events_;
  if (kinds_.size() >= limits::kinds) forget_kinds();
  plan_use& use = use_of(event, plan_for(event.shape()));
  ++use.what->events;
  if (use.parts.empty()) return;
  matches_.clear();
  for (std::size_t i = 0; i < use.parts.size(); ++i) {
    const auto& [part, state] = use.what->parts[i];
    const plan_use::part_fields& fields = use.parts[i];
    if (!passes_where(event, *part.source, fields.where)) continue;
    for (std::size_t f = 0; f < fields.asked.size(); ++f) {
      collect(event, fields.from[f], state->values[fields.asked[f]]);
    }
    part.group->matcher->match(*state, fields.asked, part.wanted, scratch_, part_matches_);
    for (const std::uint32_t f : fields.asked) state->values[f].clear();
    for (const std::uint32_t r : part_matches_) {
      matches_.push_back(static_cast<std::uint32_t>(part.group->rules[r]));
    }
    if (!state->gave_up.empty()) count_given_up(*part.group, *state);
  }
  if (matches_.empty()) return;
  std::sort(matches_.begin(), matches_.end());
  matches_.erase(std::unique(matches_.begin(), matches_.end()), matches_.end());
  on_match_(event, matches_);
}

void hunter::take_unconcerned() {
  for (const auto& [key, known] : kinds_) {
    if (known->events == 0) continue;
    if (known->parts.empty()) {
      add_channel(counts_.unconcerned, known->channel, known->events,
                  limits::counted_channels_of_part);
    }
    known->events = 0;
  }
}

hunt_counts hunter::counts() {
  take_unconcerned();
  counts_.events = events_ - part_began_;
  return counts_;
}

void hunt_counts::add(const hunt_counts& part, std::uint64_t log) {
  events += part.events;
  for (const auto& [channel, count] : part.unconcerned) {
    add_channel(unconcerned, channel, count, limits::counted_channels);
  }
  for (const auto& [rule, count] : part.gave_up) gave_up[rule] += count;
  for (const auto& [rule, ignored] : part.left_out) {
    const auto [last, fresh] = last_log_.try_emplace(rule, log);
    if (!fresh && last->second == log) continue;
    last->second = log;
    ++left_out[rule];
  }
}

}  // namespace zanvik::sigma
