// A decoded .evtx record as a sink gets it: header, slots, and the layout that names them.
//
// Slots say where the values are; their texts are made only when needed. What the record's
// templates alone decide (slot names, fields in the template itself) is in the layout, which
// records of one template share. All of it is valid only during the sink's call.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "evtx/container/chunk.h"
#include "evtx/values/value_text.h"

namespace zanvik {

// A value of the record's own slot table, or of a table nested in one of its slots. A record's
// slots are in the order of their table; children directly follow their slot.
struct record_slot {
  std::uint32_t offset = 0;  // of the value in the chunk
  std::uint16_t size = 0;    // bytes
  std::uint16_t type = 0;    // see value_text.h
  std::uint16_t flags = 0;   // `slot_cut`
  std::uint16_t child = 0;   // number among the slot's children, from 1; 0 for an own slot
};

// A field of the token stream itself.
struct layout_field {
  std::string name;
  std::uint16_t type = 0;
  std::string text;

  bool operator==(const layout_field&) const = default;
};

// What the templates of a record decide. Equal IDs are equal layouts for the whole run; 0 is a
// layout of a single record, such as one without templates.
struct record_layout {
  std::uint64_t id = 0;
  std::vector<std::string> names;            // of the slots, empty if a slot has none
  std::vector<std::uint16_t> child_numbers;  // `record_slot::child` of the slots
  std::vector<layout_field> fields;          // by name, each name once
  std::int32_t event_id_slot = -1;           // the first slot named "EventID" in any case
  std::int32_t time_slot = -1;               // of its TimeCreated, see record_time.h
};

// The slot's text if it is not made from its value: composed from nested binary XML, or inserted by
// a translator.
struct slot_text {
  std::size_t slot = 0;
  std::string text;
};

struct record_fields {
  const chunk_view* chunk = nullptr;
  std::uint32_t size = 0;          // m_size
  std::uint64_t number = 0;        // m_logical_record_num
  std::uint64_t time_written = 0;  // m_time_written, FILETIME
  std::uint64_t first_number = 0;  // the chunk's declared range
  std::uint64_t last_number = 0;
  std::uint64_t file_offset = 0;  // of the record
  std::uint32_t event_id = 0;
  std::uint64_t time = 0;     // FILETIME: `time_written` or its TimeCreated, see reader_options
  bool plain = false;         // decoded without a template
  bool in_slack = false;      // a candidate from the free tail of its chunk
  bool slack_search = false;  // slack is searched in this walk
  bool after_slack = false;   // such a candidate was tried before it in the block, or it is one
  std::span<const record_slot> slots;
  const record_layout* layout = nullptr;
  std::vector<slot_text> slot_texts;  // by ascending slot; almost always empty

  const std::string& slot_name(std::size_t slot) const { return layout->names[slot]; }
  raw_value value(std::size_t slot) const {
    const record_slot& found = slots[slot];
    raw_value value = raw_value_at(chunk->bytes, found.offset, found.type, found.size);
    value.full_sid = chunk->full_sids;
    return value;
  }
  // The text that replaces the slot's value, or null.
  const std::string* replaced_text(std::size_t slot) const;
};

// The first slot of that name, in any case; -1 if there is none.
std::ptrdiff_t find_slot(const record_layout& layout, std::string_view name);
// The field of exactly that name, else the first of that name in any case; null if there is none.
const layout_field* find_layout_field(const record_layout& layout, std::string_view name);

// The slot's plain text, appended.
void append_slot_text(std::string& out, const record_fields& record, std::size_t slot);

}  // namespace zanvik
