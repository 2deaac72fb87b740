// Records with a template, the plain way: their slots and the bodies that name them, decoded for
// this one record. It accepts any record; quick_records.h has the quick path for ordinary ones and
// leaves the others to this.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "evtx/bxml/bxml_tokens.h"
#include "evtx/record_fields.h"
#include "evtx/templates/template_catalogue.h"

namespace zanvik {

// The result of a record's templates: slots with names and children, and the fields of the bodies.
struct template_content {
  std::vector<slot_entry> slots;
  field_map fields;
};

// Decodes the body of the template at `ref`: names `slots`, clears and fills `fields`, appends the
// composed text to `text` and the places of the slots' values in it to `places`, unless these are
// null. Returns false if the definition there does not have the size that the reference states.
bool decode_template_body(const chunk_view& chunk, const template_ref& ref,
                          std::vector<slot_entry>& slots, field_map& fields, std::string* text,
                          std::vector<slot_place>* places = nullptr);

// Reads the record whose binary XML starts at `bxml` with the instance `head`. Adds its templates
// to the catalogue. Nothing if no template can be found for it.
std::optional<template_content> read_template_record(template_catalogue& catalogue,
                                                     const chunk_view& chunk, std::uint64_t bxml,
                                                     const instance_head& head, std::string* text);

// Moves the fields to the layout's, in their order; leaves none.
void move_fields(field_map& fields, record_layout& layout);

// The content as a record's slots, texts and layout (whose ID is 0), in the order of records.
void flatten_content(template_content&& content, std::vector<record_slot>& slots,
                     std::vector<slot_text>& texts, record_layout& layout);

}  // namespace zanvik
