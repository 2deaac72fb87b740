#include "evtx/record_fields.h"

#include <algorithm>

#include "base/text.h"

namespace zanvik {

const std::string* record_fields::replaced_text(std::size_t slot) const {
  for (const slot_text& replaced : slot_texts) {
    if (replaced.slot == slot) return &replaced.text;
  }
  return nullptr;
}

std::ptrdiff_t find_slot(const record_layout& layout, std::string_view name) {
  const auto found =
      std::find_if(layout.names.begin(), layout.names.end(),
                   [name](const std::string& each) { return equal_nocase(each, name); });
  return found == layout.names.end() ? -1 : found - layout.names.begin();
}

const layout_field* find_layout_field(const record_layout& layout, std::string_view name) {
  const auto exact = std::lower_bound(
      layout.fields.begin(), layout.fields.end(), name,
      [](const layout_field& field, std::string_view wanted) { return field.name < wanted; });
  if (exact != layout.fields.end() && exact->name == name) return &*exact;
  const auto found =
      std::find_if(layout.fields.begin(), layout.fields.end(),
                   [name](const layout_field& field) { return equal_nocase(field.name, name); });
  return found == layout.fields.end() ? nullptr : &*found;
}

void append_slot_text(std::string& out, const record_fields& record, std::size_t slot) {
  if (const std::string* text = record.replaced_text(slot)) {
    out.append(*text);
  } else {
    append_value_text(out, record.value(slot));
  }
}

}  // namespace zanvik
