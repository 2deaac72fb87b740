#include "events/evtx_fields.h"

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

bool find_field(const record_fields& record, std::string_view name, std::string& value,
                bool clean) {
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
  const layout_field* field = find_layout_field(*record.layout, name);
  if (!field) return false;
  value = field->text;
  if (clean) clean_text(value, value_form::pulled);
  return true;
}

}  // namespace zanvik
