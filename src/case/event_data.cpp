#include "case/event_data.h"

#include "export/json_members.h"

namespace zanvik {
namespace {

void write_value(json_members& members, const value_parts& parts, form_program& out) {
  if (parts.empty() || (parts.size() == 1 && parts.front().slot == absent_slot)) {
    out.text("null");
  } else if (parts.size() == 1 && parts.front().slot >= 0) {
    out.add(gap::json_value, parts.front().slot);
  } else {
    members.quoted(parts);
  }
}

// Data without names as one array. Many sources write them as one array to begin with.
void write_unnamed(json_members& members, const event_shape& shape, form_program& out) {
  bool any = false;
  for (const event_field& field : shape.fields) {
    if (field.group == field_group::system || !field.name.empty()) continue;
    if (!any) {
      members.name("Data");
      out.text("[");
      any = true;
    }
    if (field.parts.size() == 1 && field.parts.front().array) {
      out.add(gap::json_items, field.parts.front().slot);
      continue;
    }
    write_value(members, field.parts, out);
    out.text(",");
  }
  if (!any) return;
  out.add(gap::json_list_end);
  out.text("]");
}

void build(const event_view& event, form_program& out) {
  json_members members(event, out);
  members.open_object();
  write_unnamed(members, event.shape(), out);
  for (const event_field& field : event.shape().fields) {
    if (field.group == field_group::system || field.name.empty()) continue;
    members.name(field.name);
    write_value(members, field.parts, out);
  }
  members.close_object();
}

}  // namespace

std::string_view event_data::of(const event_view& event, bool& lossy) {
  const form_program& program =
      programs_.of(event, [&event](form_program& fresh) { build(event, fresh); });
  text_.clear();
  lossy = program.write(out_, event, {}, false);
  out_.flush();
  return text_;
}

}  // namespace zanvik
