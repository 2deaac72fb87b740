#include "evtx/templates/quick_records.h"

#include <cstring>
#include <utility>

#include "base/hash_mix.h"
#include "evtx/templates/template_record.h"
#include "evtx/values/value_text.h"

namespace zanvik {
namespace {

// What a walked table holds, and what it costs in bytes of the file.
struct walked_table {
  std::uint16_t count = 0;
  std::uint64_t cost = 0;
};

// Appends the values of a slot table as slots; `nested` is called for each that is binary XML,
// with its number and offset, and may append slots of its own. Nothing as soon as the table is not
// an ordinary one.
template <typename F>
std::optional<walked_table> walk_table(const chunk_view& chunk, std::uint64_t table, bool children,
                                       std::vector<record_slot>& slots, F&& nested) {
  constexpr std::uint64_t least_bytes = 8;  // of a table, an empty one included
  if (table > evtx_layout::chunk_bytes - least_bytes) return std::nullopt;
  const auto count = chunk.bytes.at<std::uint32_t>(table);
  if (!count || *count > limits::slots_per_table) return std::nullopt;
  const auto descriptors = chunk.bytes.bytes_at(table + 4, 4 * std::uint64_t{*count});
  if (descriptors.size() != 4u * *count) return std::nullopt;
  std::uint64_t value = table + 4 + descriptors.size();
  walked_table walked{static_cast<std::uint16_t>(*count), 4 + descriptors.size()};
  for (std::uint32_t i = 0; i < *count; ++i) {
    std::uint32_t word;
    std::memcpy(&word, descriptors.data() + 4 * i, sizeof(word));
    const auto size = static_cast<std::uint16_t>(word);
    const auto type = static_cast<std::uint16_t>(word >> 16);
    slots.push_back({static_cast<std::uint32_t>(value), size, type, 0,
                     static_cast<std::uint16_t>(children ? i + 1 : 0)});
    if (type == value_type::bxml && !nested(i, value)) return std::nullopt;
    walked.cost += value_source_bytes(raw_value_at(chunk.bytes, value, type, size));
    value += size;
    if (value >= evtx_layout::chunk_bytes) return std::nullopt;  // cut, or as good as cut
  }
  return walked;
}

std::size_t mixed(std::uint64_t value) {
  return static_cast<std::size_t>(value * hash_multiplier >> 40);
}

}  // namespace

std::size_t quick_records::key_hash::operator()(const layout_key& key) const {
  return mixed(key.first ^ key.second << 20 ^ std::uint64_t{key.slots} << 40 ^
               std::uint64_t{key.children} << 48);
}

void quick_records::start_chunk(bool layouts_dropped) {
  templates_.fill({});
  known_layouts_.fill({});
  if (bodies_.drop_if_full() || layouts_dropped || by_bodies_.size() > limits::cached_layouts) {
    by_bodies_.clear();
  }
}

// One place for each offset; another template that falls on it drives the first one out.
quick_records::known_template& quick_records::place_of(std::uint32_t definition) {
  return templates_[mixed(definition) & (places - 1)];
}

const quick_records::known_template* quick_records::first_template(template_catalogue& catalogue,
                                                                   const chunk_view& chunk,
                                                                   std::uint64_t bxml,
                                                                   const instance_head& head) {
  known_template& place = place_of(head.definition);
  if (place.definition == head.definition && place.ref) return &place;
  const template_ref* ref =
      resolve_first_reference(catalogue, chunk, bxml, head.template_id, head.definition);
  const auto size =
      chunk.bytes.at<std::uint32_t>(head.definition + evtx_layout::definition_size_at);
  if (!ref || !size || !enter(chunk, head.definition, *size, ref, place)) return nullptr;
  return &place;
}

// Notes what is known of a template; false when the definition that its reference leads to is not
// the one meant.
bool quick_records::enter(const chunk_view& chunk, std::uint32_t definition,
                          std::uint32_t size_record, const template_ref* ref,
                          known_template& place) {
  if (!body_matches(chunk, *ref)) return false;
  place = {definition, size_record, ref,
           bodies_.identify(chunk, ref->definition, ref->size_record, ref->guid)};
  return true;
}

// The nested template instance at `value` and the values behind it.
bool quick_records::read_nested(template_catalogue& catalogue, const chunk_view& chunk,
                                std::uint64_t value, std::vector<record_slot>& slots,
                                layout_key& key) {
  const auto head = nested_instance_at(chunk, value);
  if (!head || head->definition > chunk.bound) return false;
  known_template& place = place_of(head->definition);
  if (place.definition != head->definition || !place.ref) {
    const auto named = definition_at(chunk, head->definition, head->template_id);
    if (!named) return false;
    catalogue.add(*named);
    const template_ref* ref = catalogue.find(named->guid);
    if (!enter(chunk, head->definition, named->size_record, ref, place)) return false;
  }
  std::uint32_t first_of_guid;
  std::memcpy(&first_of_guid, place.ref->guid.data(), sizeof(first_of_guid));
  if (first_of_guid != head->template_id) return false;  // it names no template
  std::uint64_t table = value + head->length;
  if (head->definition == table) {
    // User data is decoded where it stands and then by the catalogue: these must be the same.
    if (place.ref->definition != head->definition) return false;
    table += evtx_layout::definition_head_bytes + place.size_record;
  }
  key.second = place.ref->definition;
  key.second_body = place.body;
  const auto walked =
      walk_table(chunk, table, true, slots, [](std::uint32_t, std::uint64_t) { return false; });
  if (!walked) return false;
  key.children = walked->count;
  cost_ += walked->cost;
  return true;
}

bool quick_records::read_own_slots(template_catalogue& catalogue, const chunk_view& chunk,
                                   std::uint64_t table, std::vector<record_slot>& slots,
                                   layout_key& key) {
  const auto walked =
      walk_table(chunk, table, false, slots, [&](std::uint32_t slot, std::uint64_t value) {
        if (key.second != 0) return false;  // a second nested template
        key.nested_slot = static_cast<std::uint16_t>(slot);
        return read_nested(catalogue, chunk, value, slots, key);
      });
  if (!walked) return false;
  key.slots = walked->count;
  cost_ += walked->cost;
  return true;
}

const record_layout* quick_records::layout_for(const chunk_view& chunk, const layout_key& key) {
  known_layout& place = known_layouts_[key_hash()(key) & (places - 1)];
  if (place.layout && place.key == key) return place.layout;
  const layout_key bodies = body_key(key);
  const auto known = by_bodies_.find(bodies);
  if (bodies.first != 0 && known != by_bodies_.end()) {
    place = {key, known->second};
    return place.layout;
  }
  const record_layout* layout = decode_layout(chunk, key);
  if (!layout) return nullptr;
  place = {key, layout};
  // What a chunk's work budget cut short says nothing about other chunks.
  if (bodies.first != 0 && chunk.budget->body_bytes > 0) by_bodies_.emplace(bodies, layout);
  return layout;
}

// The key with the numbers of the bodies in place of their offsets; `first` is 0 when one of them
// is not known.
quick_records::layout_key quick_records::body_key(const layout_key& key) {
  layout_key bodies = key;
  bodies.first = key.second != 0 && key.second_body == 0 ? 0 : key.first_body;
  bodies.second = key.second_body;
  return bodies;
}

// Decodes the bodies over empty slots: the names that they give do not depend on the values.
const record_layout* quick_records::decode_layout(const chunk_view& chunk, const layout_key& key) {
  const auto reference = [&chunk](std::uint64_t definition) {
    const auto size =
        chunk.bytes.at_or_zero<std::uint32_t>(definition + evtx_layout::definition_size_at);
    return template_ref{definition, size, {}};
  };
  template_content content;
  content.slots.resize(key.slots);
  if (!decode_template_body(chunk, reference(key.first), content.slots, content.fields, nullptr)) {
    return nullptr;
  }
  if (key.children != 0) {  // without values the nested body is not decoded and gives no fields
    std::vector<slot_entry>& children = content.slots[key.nested_slot].children;
    children.resize(key.children);
    field_map found;
    if (decode_template_body(chunk, reference(key.second), children, found, nullptr)) {
      content.fields.merge(found);
    }
  }
  record_layout layout;
  std::vector<record_slot> unused_slots;
  std::vector<slot_text> unused_texts;
  flatten_content(std::move(content), unused_slots, unused_texts, layout);
  return layouts_.intern(std::move(layout));
}

const record_layout* quick_records::read(template_catalogue& catalogue, const chunk_view& chunk,
                                         std::uint64_t bxml, const instance_head& head,
                                         std::vector<record_slot>& slots) {
  slots.clear();
  if (bxml > evtx_layout::chunk_bytes || chunk.budget->slot_bytes <= 0) return nullptr;
  cost_ = 0;
  const known_template* known = first_template(catalogue, chunk, bxml, head);
  if (!known) return nullptr;
  std::uint64_t table = bxml + head.length;
  if (head.definition == table) table += evtx_layout::definition_head_bytes + known->size_record;
  layout_key key;
  key.first = known->ref->definition;
  key.first_body = known->body;
  if (!read_own_slots(catalogue, chunk, table, slots, key)) return nullptr;
  if (!work_budget::spend(chunk.budget->slot_bytes, cost_)) return nullptr;
  return layout_for(chunk, key);
}

}  // namespace zanvik
