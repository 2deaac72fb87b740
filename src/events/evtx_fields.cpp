#include "events/evtx_fields.h"

namespace zanvik {

void append_column_text(std::string& out, const record_fields& record, std::size_t slot,
                        cell_form form) {
  if (const std::string* replaced = record.replaced_text(slot)) {
    std::string text = *replaced;
    clean_cell_text(text, form);
    out.append(text);
    return;
  }
  const raw_value value = record.value(slot);
  const std::size_t before = out.size();
  out.resize(before + value_text_bound(value));
  bool marked = false;
  value_writer writer;
  const char* end = write_cell_text(writer, out.data() + before, value, form, marked);
  out.resize(static_cast<std::size_t>(end - out.data()));
}

bool find_field(const record_fields& record, std::string_view name, std::string& value,
                bool clean) {
  value.clear();
  if (const std::ptrdiff_t slot = find_slot(*record.layout, name); slot >= 0) {
    const auto found = static_cast<std::size_t>(slot);
    if (clean) {
      append_column_text(value, record, found, cell_form::pulled);
    } else {
      append_slot_text(value, record, found);
    }
    return true;
  }
  const layout_field* field = find_layout_field(*record.layout, name);
  if (!field) return false;
  value = field->text;
  if (clean) clean_cell_text(value, cell_form::pulled);
  return true;
}

}  // namespace zanvik
