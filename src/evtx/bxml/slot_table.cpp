#include "evtx/bxml/slot_table.h"

#include <algorithm>
#include <cstring>
#include <string>
#include <utility>

#include "evtx/bxml/bxml_tokens.h"
#include "evtx/values/value_text.h"

namespace zanvik {
namespace {

// Past this offset no value is read: the chunk and a file header's length.
constexpr std::uint64_t data_offset_max = evtx_layout::file_header_bytes + evtx_layout::chunk_bytes;
constexpr unsigned children_depth = 2;  // a record's slots and their children

struct descriptor {
  std::uint64_t size = 0;
  std::uint16_t type = 0;
};

// The head of a slot table: its count and where the values start.
class table_head {
 public:
  // Refused (false) if it does not exist, is too long, or would exceed the chunk's budget.
  bool read(const chunk_view& chunk, std::uint64_t table) {
    const auto count = chunk.bytes.at<std::uint32_t>(table);
    if (!count || *count > limits::slots_per_table) return false;
    if (!work_budget::spend(chunk.budget->slot_bytes, 4 + 4 * *count)) return false;
    bytes_ = &chunk.bytes;
    table_ = table;
    count_ = *count;
    return true;
  }
  std::uint32_t count() const { return count_; }
  std::uint64_t values() const { return table_ + 4 + 4 * std::uint64_t{count_}; }
  descriptor operator[](std::uint32_t slot) const {
    return {bytes_->at_or_zero<std::uint16_t>(table_ + 4 + 4 * std::uint64_t{slot}),
            bytes_->at_or_zero<std::uint16_t>(table_ + 6 + 4 * std::uint64_t{slot})};
  }

 private:
  const byte_cursor* bytes_ = nullptr;
  std::uint64_t table_ = 0;
  std::uint32_t count_ = 0;
};

// Makes the slot of a value that is nested plain binary XML. False if the value gives nothing.
bool read_plain_slot(const chunk_view& chunk, std::uint64_t value, unsigned depth,
                     slot_entry& slot) {
  slot.offset = static_cast<std::uint32_t>(value);
  slot.type = value_type::bxml;
  slot.name = plain_slot_name;
  slot.composed = true;
  return decode_plain_value(chunk, value, depth, &slot.text);
}

// Adds the slot of a value that is not binary XML, cut at the chunk's end. False, with nothing
// added, if it would exceed the budget.
bool add_slot(const chunk_view& chunk, std::uint64_t value, descriptor entry,
              std::vector<slot_entry>& slots) {
  slot_entry slot;
  const std::uint64_t rest = evtx_layout::chunk_bytes - value;
  // Meant: a value that ends exactly at the chunk's end counts as cut.
  if (entry.size >= rest && entry.size != 0) {
    entry.size = rest;
    slot.flags = slot_cut;
  }
  slot.offset = static_cast<std::uint32_t>(value);
  slot.type = entry.type;
  slot.size = static_cast<std::uint16_t>(entry.size);
  const auto cost = value_source_bytes(raw_value_at(chunk.bytes, value, slot.type, slot.size));
  if (!work_budget::spend(chunk.budget->slot_bytes, cost)) return false;
  slots.push_back(std::move(slot));
  return true;
}

// Adds a slot whose children come from the table at `table`; none if that is refused.
void add_nested_slot(const chunk_view& chunk, std::uint64_t value, std::uint64_t table,
                     descriptor entry, std::vector<slot_entry>& slots, unsigned depth) {
  slot_entry slot;
  if (!parse_substitution_array(chunk, table, slot.children, depth + 1)) return;
  slot.offset = static_cast<std::uint32_t>(value);
  slot.type = entry.type;
  const std::uint64_t head = table - value;
  slot.size = static_cast<std::uint16_t>(entry.size > head ? entry.size - head : 0);
  slots.push_back(std::move(slot));
}

// One nested value of `parse_substitution_array`. Returns whether the walk moves past it.
bool read_nested_slot(const chunk_view& chunk, std::uint64_t value, descriptor entry,
                      std::vector<slot_entry>& slots, unsigned depth) {
  const auto head = nested_instance_at(chunk, value);
  if (!head) {
    slot_entry slot;
    if (!read_plain_slot(chunk, value, depth, slot)) return false;
    slot.size = static_cast<std::uint16_t>(entry.size);
    slots.push_back(std::move(slot));
    // Meant: the same bytes are then tried as a slot table, which is nearly always refused.
    add_nested_slot(chunk, value, value, entry, slots, depth);
    return true;
  }
  if (head->definition > chunk.bound) return false;
  const auto table = slot_table_behind(chunk, value, head->length, head->definition);
  if (table) add_nested_slot(chunk, value, *table, entry, slots, depth);
  return true;
}

// One nested value of `parse_template_slots`. Returns whether the walk moves past it.
bool find_nested_templates(const chunk_view& chunk, std::uint64_t value,
                           std::vector<template_ref>& found, unsigned depth) {
  const auto head = nested_instance_at(chunk, value);
  if (!head) return decode_plain_value(chunk, value, depth, nullptr);
  if (head->definition > chunk.bound) return false;
  if (const auto ref = definition_at(chunk, head->definition, head->template_id)) {
    found.push_back(*ref);
  }
  const auto nested = slot_table_behind(chunk, value, head->length, head->definition);
  if (nested) parse_template_slots(chunk, *nested, found, depth + 1);
  return true;
}

}  // namespace

bool decode_plain_value(const chunk_view& chunk, std::uint64_t value, unsigned depth,
                        std::string* text) {
  std::vector<slot_entry> no_slots;
  bxml_cursor cursor{chunk};
  cursor.position = value;
  cursor.slots = &no_slots;
  cursor.budget = &chunk.budget->plain_bytes;
  cursor.depth = depth + 1;
  const bxml_result found = decode_bxml(text, nullptr, cursor);
  return found.element_bytes != 0 || found.any_fields;
}

std::optional<template_ref> definition_at(const chunk_view& chunk, std::uint64_t offset,
                                          std::uint32_t template_id) {
  const auto size = chunk.bytes.at<std::uint32_t>(offset + evtx_layout::definition_size_at);
  if (!size) return std::nullopt;
  template_ref ref;
  ref.definition = offset;
  ref.size_record = *size;
  const auto guid = chunk.bytes.bytes_at(offset + evtx_layout::definition_guid_at, 16);
  std::copy(guid.begin(), guid.end(), ref.guid.begin());
  std::uint32_t first = 0;
  std::memcpy(&first, ref.guid.data(), sizeof(first));
  if (first != template_id) return std::nullopt;
  return ref;
}

std::optional<std::uint64_t> slot_table_behind(const chunk_view& chunk, std::uint64_t instance,
                                               std::uint64_t head_length,
                                               std::uint64_t definition) {
  const std::uint64_t behind = instance + head_length;
  if (definition != behind) return behind;
  const auto size = chunk.bytes.at<std::uint32_t>(behind + evtx_layout::definition_size_at);
  if (!size) return std::nullopt;
  return behind + evtx_layout::definition_head_bytes + *size;
}

bool parse_template_slots(const chunk_view& chunk, std::uint64_t table,
                          std::vector<template_ref>& found, unsigned depth) {
  table_head head;
  if (depth > limits::nesting_depth || !head.read(chunk, table)) return false;
  std::uint64_t value = head.values();
  for (std::uint32_t i = 0; i < head.count(); ++i) {
    if (value > data_offset_max) return true;
    descriptor entry = head[i];
    if (value + entry.size > evtx_layout::chunk_bytes) {
      entry.size = evtx_layout::chunk_bytes - std::min(value, evtx_layout::chunk_bytes);
    }
    // Meant: a value that gives nothing is skipped without moving on, so later values are read from
    // the wrong place.
    if (entry.type != value_type::bxml || find_nested_templates(chunk, value, found, depth)) {
      value += entry.size;
    }
  }
  return true;
}

bool parse_substitution_array(const chunk_view& chunk, std::uint64_t table,
                              std::vector<slot_entry>& slots, unsigned depth) {
  slots.clear();
  constexpr std::uint64_t least_bytes = 8;
  table_head head;
  if (table > evtx_layout::chunk_bytes || evtx_layout::chunk_bytes - table < least_bytes ||
      !head.read(chunk, table)) {
    return false;
  }
  if (head.count() == 0) return true;
  std::uint64_t value = head.values();
  if (value >= evtx_layout::chunk_bytes) return false;
  // Deeper slots are never shown; it only matters whether their table is good.
  if (depth >= children_depth) return true;
  for (std::uint32_t i = 0; i < head.count() && value < evtx_layout::chunk_bytes; ++i) {
    const descriptor entry = head[i];
    if (entry.type == value_type::bxml) {
      if (read_nested_slot(chunk, value, entry, slots, depth)) value += entry.size;
      continue;
    }
    if (!add_slot(chunk, value, entry, slots)) return true;
    value += entry.size;
  }
  return true;
}

}  // namespace zanvik
