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

void build(const event_view& event, form_program& out) {
  json_members members(event, out);
  members.open_object();
  unsigned unnamed = 0;
  for (const event_field& field : event.shape().fields) {
    if (field.group == field_group::system) continue;
    members.name(field.name.empty() ? "param" + std::to_string(++unnamed) : field.name);
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
