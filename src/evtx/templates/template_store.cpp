#include "evtx/templates/template_store.h"

#include <utility>

#include "base/hash_mix.h"
#include "base/unique_number.h"
#include "evtx/templates/template_record.h"

namespace zanvik {
namespace {

std::uint64_t content_hash(const record_layout& layout) {
  std::uint64_t hash = layout.names.size();
  for (const std::string& name : layout.names) hash = keyed_hash(name, hash);
  for (const std::uint16_t number : layout.child_numbers) hash = keyed_hash(number, hash);
  for (const layout_field& field : layout.fields) {
    hash = keyed_hash(field.text, keyed_hash(field.name, hash + field.type));
  }
  return hash;
}

bool same_content(const record_layout& a, const record_layout& b) {
  return a.names == b.names && a.child_numbers == b.child_numbers && a.fields == b.fields;
}

// The cost of a layout: the bytes in it.
std::uint64_t cost_of(const record_layout& layout) {
  std::uint64_t bytes =
      layout.names.size() * sizeof(std::string) + layout.fields.size() * sizeof(layout_field);
  for (const std::string& name : layout.names) bytes += name.size();
  for (const layout_field& field : layout.fields) bytes += field.name.size() + field.text.size();
  return bytes;
}

template_ref reference_to(const chunk_view& chunk, std::uint64_t definition) {
  template_ref ref;
  ref.definition = definition;
  ref.size_record =
      chunk.bytes.at_or_zero<std::uint32_t>(definition + evtx_layout::definition_size_at);
  if (const auto guid = definition_guid(chunk, definition)) ref.guid = *guid;
  return ref;
}

}  // namespace

std::size_t template_store::key_hash::operator()(const layout_key& key) const {
  const std::uint64_t counts = key.slots | std::uint64_t{key.nested_slot} << 16 |
                               std::uint64_t{key.children} << 32 |
                               std::uint64_t{key.plain_slot} << 48;
  return keyed_hash(keyed_hash(key.first, key.second), counts);
}

void template_store::start_chunk(const chunk_view& chunk) {
  const bool too_many = layouts_.size() > limits::cached_layouts ||
                        by_bodies_.size() > limits::cached_layouts ||
                        held_bytes_ > limits::cached_layout_bytes;
  if (bodies_.drop_if_full() || too_many) {
    by_bodies_.clear();
    layouts_.clear();
    held_bytes_ = 0;
  }
  definitions_.clear();
  chunk_layouts_.clear();
  catalogue_.read(chunk);
}

const known_template* template_store::find(std::uint32_t definition) {
  return definitions_.find(keyed_hash(definition), [definition](const known_template& each) {
    return each.definition == definition;
  });
}

const known_template* template_store::enter(const chunk_view& chunk, std::uint32_t definition,
                                            std::uint32_t size_record, const template_ref& ref) {
  if (!body_matches(chunk, ref)) return nullptr;
  known_template known{definition, size_record, ref, 0};
  if (chunk.budget->body_bytes > 0) {
    known.body = bodies_.identify(chunk, ref.definition, ref.size_record, ref.guid);
    (void)work_budget::spend(chunk.budget->body_bytes, bodies_.bytes_read());
  }
  return &definitions_.add(keyed_hash(definition), known);
}

template_store::layout_answer template_store::layout_for(const chunk_view& chunk,
                                                         const layout_key& key) {
  const std::uint64_t hash = key_hash()(key);
  const auto* known =
      chunk_layouts_.find(hash, [&](const chunk_layout& each) { return each.key == key; });
  if (known) return known->answer;
  return chunk_layouts_.add(hash, {key, find_layout(chunk, key)}).answer;
}

template_store::layout_answer template_store::find_layout(const chunk_view& chunk,
                                                          const layout_key& key) {
  if (chunk.budget->body_bytes <= 0 || chunk.budget->layout_bytes <= 0) {
    return {answer::too_much, nullptr};
  }
  // By the numbers of the bodies, wherever they are.
  layout_key bodies = key;
  bodies.first = key.first_body;
  bodies.second = key.second_body;
  const bool recognised = key.first_body != 0 && (key.second == 0 || key.second_body != 0);
  const auto known = recognised ? by_bodies_.find(bodies) : by_bodies_.end();
  const kept_layout* layout = known != by_bodies_.end() ? known->second : decode_layout(chunk, key);
  if (!layout) return {answer::mismatch, nullptr};
  if (recognised && known == by_bodies_.end() && is_unchanged(chunk, key)) {
    by_bodies_.emplace(bodies, layout);
  }
  if (!work_budget::spend(chunk.budget->layout_bytes, layout->cost)) {
    return {answer::too_much, nullptr};
  }
  return {answer::found, &layout->layout};
}

// Whether the bodies are still as they were when recognised: a record found after damage may have
// been cut in the middle of them since.
bool template_store::is_unchanged(const chunk_view& chunk, const layout_key& key) {
  const auto number_at = [&](std::uint64_t definition) {
    const template_ref ref = reference_to(chunk, definition);
    return bodies_.identify(chunk, definition, ref.size_record, ref.guid);
  };
  return number_at(key.first) == key.first_body &&
         (key.second == 0 || number_at(key.second) == key.second_body);
}

const template_store::kept_layout* template_store::decode_layout(const chunk_view& chunk,
                                                                 const layout_key& key) {
  record_layout layout;
  return decode_key(chunk, key, layout) ? keep(std::move(layout)) : nullptr;
}

const record_layout* template_store::intern(record_layout layout) {
  return &keep(std::move(layout))->layout;
}

const template_store::kept_layout* template_store::keep(record_layout layout) {
  const std::uint64_t hash = content_hash(layout);
  const auto [first, last] = layouts_.equal_range(hash);
  for (auto it = first; it != last; ++it) {
    if (same_content(it->second->layout, layout)) return it->second.get();
  }
  const std::uint64_t cost = cost_of(layout);
  layout.id = unique_number();
  held_bytes_ += cost;
  auto kept = std::make_unique<kept_layout>(kept_layout{std::move(layout), cost});
  return layouts_.emplace(hash, std::move(kept))->second.get();
}

bool decode_key(const chunk_view& chunk, const layout_key& key, record_layout& layout) {
  work_budget budget;
  budget.body_bytes = limits::layout_bytes;
  chunk_view view = chunk;
  view.budget = &budget;
  template_content content;
  content.slots.resize(key.slots);
  if (key.plain_slot != 0) content.slots[key.plain_slot - 1].name = plain_slot_name;
  if (!decode_template_body(view, reference_to(view, key.first), content.slots, content.fields,
                            nullptr)) {
    return false;
  }
  if (key.children != 0) {  // without values the nested body is not decoded and gives no fields
    std::vector<slot_entry>& children = content.slots[key.nested_slot].children;
    children.resize(key.children);
    field_map found;
    if (decode_template_body(view, reference_to(view, key.second), children, found, nullptr)) {
      content.fields.merge(found);
    }
  }
  std::vector<record_slot> unused_slots;
  std::vector<slot_text> unused_texts;
  flatten_content(std::move(content), unused_slots, unused_texts, layout);
  return true;
}

}  // namespace zanvik
