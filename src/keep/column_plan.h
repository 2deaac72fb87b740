// Which columns a record gives, computed once for each layout: their names and order, which of them
// the template fills, and from which slot each of the others takes its value.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "events/cell_text.h"
#include "events/log_record.h"
#include "evtx/record_fields.h"

namespace zanvik {

// A column whose value comes from the record.
struct plan_value {
  std::size_t slot = 0;        // of the record
  bool one_line = false;       // user data: line feeds are removed too
  bool null_if_empty = false;  // an empty nested binary value shows "[null]"
};

struct column_plan {
  const record_shape* shape = nullptr;    // of the container
  std::vector<plan_value> values;         // one for each column that is not a literal
  const std::string* provider = nullptr;  // of the container; null if a slot gives it
  std::ptrdiff_t provider_slot = -1;      // -1 if no slot gives it
  std::ptrdiff_t level_value = -1;        // index in `values` of the column "Level"
  std::uint32_t level = 0;                // if that column is a literal
  bool reusable = true;          // false: valid for this record only, because a value decided it
  bool selects = true;           // false: such a record has none of the named fields
  std::size_t layout_bytes = 0;  // that its layout may repeat; set by the keeper
  cell_form form = cell_form::all_data;  // of all values, including the provider's
};

// The plan for a listing of all data: every named slot, every nested value under its number, every
// field of the templates. "Provider Name" becomes the provider; with `skip_system_fields` the first
// "EventID" and the first "SystemTime" are left out.
column_plan plan_all_data(const record_fields& record, bool skip_system_fields,
                          record_container& records);

// The plan without the parts that repeat the record's templates, for when they have become too
// much: literals are left out, names and the provider are cut. The level stays. `plan` may be of
// another container.
column_plan without_repeats(const column_plan& plan, record_container& records);

// The plan for named fields: a column for each name, as written; empty if the record lacks the
// field. The provider is always included, and does not count as a named field; if "Provider Name"
// itself is the first name, only the template can give it.
column_plan plan_pulled(const record_fields& record, std::span<const std::string> names,
                        record_container& records);

// The number at the start of its text, else 0.
std::uint32_t level_from_text(std::string_view text);

}  // namespace zanvik
