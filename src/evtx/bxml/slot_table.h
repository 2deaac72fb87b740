// Slot tables, the substitution arrays of template instances, read the plain way: into slots with
// children, and into the list of nested templates that they name.
//
// On-disk layout of a table: a 32-bit count; for each slot a 16-bit size and a 16-bit type; then
// the values, packed in that order. More than 96 slots are refused. Values that reach past the
// chunk's end are cut; a table cut by the chunk's end gives the slots before it.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "evtx/bxml/bxml_decoder.h"
#include "evtx/container/chunk.h"

namespace zanvik {

using guid_bytes = std::array<std::byte, 16>;

// Where a template's definition is, and the contents of its head.
struct template_ref {
  std::uint64_t definition = 0;  // chunk offset; 0 for none
  std::uint32_t size_record = 0;
  guid_bytes guid{};
};

// The definition at `offset`, if its head exists and its GUID begins with `template_id`.
std::optional<template_ref> definition_at(const chunk_view& chunk, std::uint64_t offset,
                                          std::uint32_t template_id);

// Where the slot table of an instance at `instance` is: after the head, or after a definition that
// directly follows it. Nothing if that definition's head does not exist.
std::optional<std::uint64_t> slot_table_behind(const chunk_view& chunk, std::uint64_t instance,
                                               std::uint64_t head_length, std::uint64_t definition);

// The name of a slot whose value is plain binary XML, unless the body names it.
inline constexpr std::string_view plain_slot_name = "UserData";

// Decodes the value at `value`, which is binary XML without a template, `depth` tables deep. Its
// text is appended to `text`, unless that is null. False if it gives no element and no field: such
// a value makes no slot.
bool decode_plain_value(const chunk_view& chunk, std::uint64_t value, unsigned depth,
                        std::string* text);

// Appends the nested templates that the table at `table` names; those of a nested table follow the
// one they are in. Returns false for a refused table, with `found` unchanged.
bool parse_template_slots(const chunk_view& chunk, std::uint64_t table,
                          std::vector<template_ref>& found, unsigned depth = 0);

// Reads the slots of the table at `table` into `slots`, which is cleared first. Children are read
// one level deep; deeper ones are never shown. Returns false for a refused table.
bool parse_substitution_array(const chunk_view& chunk, std::uint64_t table,
                              std::vector<slot_entry>& slots, unsigned depth = 0);

}  // namespace zanvik
