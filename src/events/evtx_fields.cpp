#include "events/evtx_fields.h"

#include "base/text.h"

namespace zanvik {
namespace {

void clean_text(std::string& text, value_form form) {
  bool marked = false;
  const char* end = clean_value_text(text.data(), text.data() + text.size(), form, marked);
  text.resize(static_cast<std::size_t>(end - text.data()));
}

}  // namespace

void append_column_text(std::string& out, const record_fields& record, std::size_t slot,
                        value_form form) {
  const std::string* replaced = record.replaced_text(slot);
  if (!replaced) return append_value_text(out, record.value(slot), form);
  std::string text = *replaced;
  clean_text(text, form);
  out.append(text);
}

bool find_field(const record_fields& record, std::string_view name, std::string& value, bool clean,
                bool slots_only) {
  value.clear();
  if (const std::ptrdiff_t slot = find_slot(*record.layout, name); slot >= 0) {
    const auto found = static_cast<std::size_t>(slot);
    if (clean) {
      append_column_text(value, record, found, value_form::pulled);
    } else {
      append_slot_text(value, record, found);
    }
    return true;
  }
  if (slots_only && !record.slots.empty()) return false;
  const layout_field* field = find_layout_field(*record.layout, name);
  if (!field) return false;
  value = field->text;
  if (clean) clean_text(value, value_form::pulled);
  return true;
}

bool field_term_matches(const record_fields& record, std::string_view term, std::string& value,
                        bool clean) {
  const auto bar = term.find('|');
  if (!find_field(record, term.substr(0, bar), value, clean)) return false;
  return bar == std::string_view::npos || contains_nocase(value, term.substr(bar + 1));
}

bool field_contains(const record_fields& record, std::string_view text, std::string& scratch) {
  for (std::size_t slot = 0; slot < record.slots.size(); ++slot) {
    if (contains_nocase(record.slot_name(slot), text)) return true;
    scratch.clear();
    append_slot_text(scratch, record, slot);
    if (contains_nocase(scratch, text)) return true;
  }
  for (const layout_field& field : record.layout->fields) {
    if (contains_nocase(field.text, text)) return true;
  }
  return false;
}

}  // namespace zanvik
