#include "evtx/templates/template_record.h"

#include <utility>

#include "evtx/record_time.h"

namespace zanvik {
namespace {

// The nested template of a record: the last one in its slots, as in the catalogue.
const template_ref* resolve_second_reference(template_catalogue& catalogue, const chunk_view& chunk,
                                             std::uint64_t table) {
  std::vector<template_ref> nested;
  if (!parse_template_slots(chunk, table, nested)) return nullptr;
  for (const template_ref& ref : nested) catalogue.add(ref);
  return nested.empty() ? nullptr : catalogue.find(nested.back().guid);
}

void append_slot(slot_entry&& entry, std::uint16_t child, std::vector<record_slot>& slots,
                 std::vector<slot_text>& texts, record_layout& layout) {
  if (entry.composed) texts.push_back({slots.size(), std::move(entry.text)});
  slots.push_back(
      {entry.offset, entry.size, entry.type, static_cast<std::uint16_t>(entry.flags), child});
  layout.names.push_back(std::move(entry.name));
  layout.child_numbers.push_back(child);
}

}  // namespace

bool decode_template_body(const chunk_view& chunk, const template_ref& ref,
                          std::vector<slot_entry>& slots, field_map& fields, std::string* text,
                          std::vector<slot_place>* places) {
  if (!body_matches(chunk, ref)) return false;
  bxml_cursor cursor{chunk};
  cursor.position = ref.definition + evtx_layout::definition_head_bytes;
  cursor.slots = &slots;
  cursor.template_body = true;
  cursor.places = places;
  cursor.budget = &chunk.budget->body_bytes;
  decode_bxml(text, &fields, cursor);
  return true;
}

std::optional<template_content> read_template_record(template_catalogue& catalogue,
                                                     const chunk_view& chunk, std::uint64_t bxml,
                                                     const instance_head& head, std::string* text) {
  if (head.definition > evtx_layout::chunk_bytes) return std::nullopt;
  const template_ref* found_first =
      resolve_first_reference(catalogue, chunk, bxml, head.template_id, head.definition);
  // A copy: nested templates are added to the catalogue next.
  const auto first = found_first ? std::optional(*found_first) : std::nullopt;
  const auto table = slot_table_behind(chunk, bxml, head.length, head.definition);
  const template_ref* second = table ? resolve_second_reference(catalogue, chunk, *table) : nullptr;
  if (!first) return std::nullopt;
  template_content content;
  if (table && bxml <= evtx_layout::chunk_bytes) {
    parse_substitution_array(chunk, *table, content.slots);
  }
  field_map found;
  if (decode_template_body(chunk, *first, content.slots, found, text)) {
    content.fields.merge(found);
  }
  if (!second) return content;
  for (std::size_t i = 0; i < content.slots.size(); ++i) {
    slot_entry& slot = content.slots[i];
    if (slot.children.empty()) continue;
    constexpr std::size_t silent_slot = 19;  // meant: the twentieth slot composes no text
    std::string* slot_text = i == silent_slot ? nullptr : text;
    if (decode_template_body(chunk, *second, slot.children, found, slot_text)) {
      content.fields.merge(found);
    }
  }
  return content;
}

void move_fields(field_map& fields, record_layout& layout) {
  layout.fields.reserve(fields.size());
  while (!fields.empty()) {
    auto field = fields.extract(fields.begin());
    layout.fields.push_back(
        {std::move(field.key()), field.mapped().type, std::move(field.mapped().text)});
  }
}

void flatten_content(template_content&& content, std::vector<record_slot>& slots,
                     std::vector<slot_text>& texts, record_layout& layout) {
  slots.clear();
  texts.clear();
  layout = {};
  for (slot_entry& slot : content.slots) {
    std::vector<slot_entry> children = std::move(slot.children);
    append_slot(std::move(slot), 0, slots, texts, layout);
    std::uint16_t number = 0;
    for (slot_entry& child : children)
      append_slot(std::move(child), ++number, slots, texts, layout);
  }
  layout.fields.reserve(content.fields.size());
  move_fields(content.fields, layout);
  layout.event_id_slot = static_cast<std::int32_t>(find_slot(layout, "EventID"));
  layout.time_slot = static_cast<std::int32_t>(find_time_slot(layout));
}

}  // namespace zanvik
