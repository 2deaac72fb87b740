#include "questions/question_reader.h"

#include <algorithm>
#include <charconv>

#include "select/event_conditions.h"

namespace zanvik {
namespace {

bool is_value(std::string_view text) { return !text.empty() && text != "-"; }

system_member member_of(std::string_view name) {
  for (std::size_t i = 0; i < system_members; ++i) {
    if (name_of(static_cast<system_member>(i)) == name) return static_cast<system_member>(i);
  }
  return system_member::count;
}

void add_field(std::vector<field_place>& out, std::int32_t field) {
  if (field >= 0) out.push_back({static_cast<std::uint32_t>(field)});
}

// The datum at a position. Sources without names often write all their data as one array.
void add_datum(const event_shape& shape, std::uint32_t position, std::vector<field_place>& out) {
  for (std::uint32_t i = 0; i < shape.fields.size(); ++i) {
    const event_field& field = shape.fields[i];
    if (field.group != field_group::data || field.position > position) continue;
    if (field.parts.size() == 1 && field.parts.front().array) {
      out.push_back({i, static_cast<std::int32_t>(position - field.position)});
      return;
    }
  }
  add_field(out, shape.datum_at(position));
}

// Appends the fields that one alternative means.
void find_alternative(const event_shape& shape, std::string_view name,
                      std::vector<field_place>& out) {
  if (name.empty()) return;
  if (name[0] == '#') {
    std::uint32_t position = 0;
    std::from_chars(name.data() + 1, name.data() + name.size(), position);
    add_datum(shape, position, out);
  } else if (name[0] == '@') {
    const system_member member = member_of(name.substr(1));
    if (member != system_member::count) add_field(out, shape.find(member));
  } else {
    // A crafted event may have thousands of that name; the first is the one that counts.
    const std::int32_t datum = shape.find_datum(name);
    if (datum >= 0) {
      add_field(out, datum);
    } else {
      // Not the data that conditions call param1, param2 ...: they are asked for by position.
      for (const std::uint32_t field : shape.find_all(name)) {
        if (shape.fields[field].group == field_group::system) continue;
        if (shape.fields[field].name.empty()) continue;
        out.push_back({field});
        break;
      }
    }
  }
}

std::vector<field_place> find_fields(const event_shape& shape, std::string_view names) {
  std::vector<field_place> fields;
  while (!names.empty()) {
    const std::size_t bar = std::min(names.find('|'), names.size());
    find_alternative(shape, names.substr(0, bar), fields);
    names.remove_prefix(std::min(bar + 1, names.size()));
  }
  return fields;
}

// The name of a condition, without the `!` of "NAME!=PATTERN".
std::string_view condition_name(std::string_view when) {
  const std::string_view name = when.substr(0, when.find('='));
  return name.ends_with('!') ? name.substr(0, name.size() - 1) : name;
}

bool same_provider(std::string_view known, std::string_view given) {
  const auto lower = [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c; };
  return std::equal(known.begin(), known.end(), given.begin(), given.end(),
                    [lower](char a, char b) { return lower(a) == lower(b); });
}

}  // namespace

question_reader::question_reader() {
  const auto all = questions();
  for (std::uint32_t number = 0; number < all.size(); ++number) {
    for (const question_source& source : all[number].sources) {
      event_ids_.set(source.event_id);
      by_id_[source.event_id].push_back({number, &source});
    }
  }
}

const question_reader::known_id& question_reader::known_for(const event_view& event,
                                                            std::uint16_t event_id) {
  const event_shape& shape = event.shape();
  if (shape.index >= shapes_.size()) shapes_.resize(shape.index + 1);
  known_shape& known = shapes_[shape.index];
  if (known.id != shape.id) known = {shape.id, {}};
  for (const known_id& one : known.ids) {
    if (one.event_id == event_id) return one;
  }
  const std::vector<known_source>& sources = by_id_[event_id];
  known_id& made = known.ids.emplace_back();
  made.event_id = event_id;
  made.fields.reserve(sources.size());  // they must not move
  for (const known_source& one : sources) {
    source_fields& fields = made.fields.emplace_back();
    fields.source = one.source;
    for (std::size_t i = 0; i < question_columns; ++i) {
      fields.columns[i] = find_fields(shape, one.source->fields[i]);
    }
    if (!one.source->when.empty()) {
      fields.when = find_fields(shape, condition_name(one.source->when));
    }
    made.sources.push_back({one.number, &fields});
  }
  return made;
}

std::span<const question_match> question_reader::matches(const event_view& event) {
  matches_.clear();
  std::uint64_t id = 0;
  if (!event.number(system_member::event_id, id) || id >= event_ids_.size() || !event_ids_[id]) {
    return {};
  }
  const auto event_id = static_cast<std::uint16_t>(id);
  const std::string_view provider = event.text(system_member::provider_name, provider_);
  const auto asks = [&](const known_source& one) {
    return same_provider(one.source->provider, provider);
  };
  const auto& sources = by_id_[event_id];
  if (std::none_of(sources.begin(), sources.end(), asks)) return {};
  for (const question_match& match : known_for(event, event_id).sources) {
    if (same_provider(match.source().provider, provider) && fits(event, *match.fields)) {
      matches_.push_back(match);
    }
  }
  return matches_;
}

std::string_view question_reader::value(const event_view& event, const field_place& place) {
  if (place.item < 0) return event.text(static_cast<std::int32_t>(place.field), scratch_);
  scratch_.clear();
  event_value rest = event.value(place.field), item;
  for (std::int32_t i = 0; next_item(rest, item); ++i) {
    if (i == place.item) append_text(scratch_, item);
  }
  return scratch_;
}

std::string_view question_reader::first_value(const event_view& event,
                                              std::span<const field_place> fields) {
  for (const field_place& place : fields) {
    const std::string_view text = value(event, place);
    const bool is_last = &place == &fields.back();
    if (is_value(text) && (is_last || text != "0x0")) return text;
  }
  return {};
}

bool question_reader::fits(const event_view& event, const source_fields& fields) {
  const std::string_view when = fields.source->when;
  if (when.empty()) return true;
  const std::string_view value = first_value(event, fields.when);
  const std::size_t equal = when.find('=');
  const bool negated = when[equal - 1] == '!';
  return !value.empty() && matches_pattern(value, when.substr(equal + 1)) != negated;
}

std::string_view question_reader::text(const event_view& event, const question_match& match,
                                       std::size_t column) {
  return first_value(event, match.fields->columns[column]);
}

}  // namespace zanvik
