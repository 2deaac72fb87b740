#include "export/json_members.h"

namespace zanvik {

void json_members::open_object(std::string_view object_name) {
  if (!object_name.empty()) name(object_name);
  out_.text("{");
  open_.emplace_back();
}

void json_members::close_object() {
  out_.text("}");
  open_.pop_back();
}

void json_members::name(std::string_view name) {
  object& current = open_.back();
  out_.text(current.empty ? "\"" : ",\"");
  current.empty = false;
  out_.escaped(current.names.take(name), escape_form::json);
  out_.text("\":");
}

void json_members::constant(std::string_view member, std::string_view text) {
  name(member);
  out_.text("\"");
  out_.escaped(text, escape_form::json);
  out_.text("\"");
}

void json_members::gap_text(std::string_view member, gap how, std::int32_t slot) {
  name(member);
  out_.text("\"");
  out_.add(how, slot);
  out_.text("\"");
}

void json_members::gap_bare(std::string_view member, gap how, std::int32_t slot) {
  name(member);
  out_.add(how, slot);
}

void json_members::unquoted(const value_parts& parts, gap how) {
  for (const value_part& part : parts) {
    if (part.slot >= 0) {
      out_.add(how, part.slot);
    } else {
      out_.escaped(part.text, how == gap::json_line ? escape_form::json_line : escape_form::json);
    }
  }
}

void json_members::quoted(const value_parts& parts, gap how) {
  out_.text("\"");
  unquoted(parts, how);
  out_.text("\"");
}

void json_members::field_text(std::string_view member, const value_parts& parts) {
  name(member);
  quoted(parts);
}

void json_members::text(std::string_view member, system_member field) {
  const std::int32_t found = event_.shape().find(field);
  if (found < 0) return;
  const value_parts& parts = event_.shape().fields[static_cast<std::size_t>(found)].parts;
  if (parts.size() == 1 && part_value(parts.front(), event_.slots()).absent()) return;
  field_text(member, parts);
}

void json_members::number(std::string_view member, system_member field) {
  const std::int32_t found = event_.shape().find(field);
  if (found < 0) return;
  const event_value value = event_.value(field);
  std::uint64_t constant_number = 0;
  if (slot_of(field) >= 0) {
    if (!value.absent()) gap_bare(member, gap::json_number, slot_of(field));
  } else if (as_unsigned(value, constant_number)) {
    name(member);
    out_.text(std::to_string(constant_number));
  }
}

std::int32_t json_members::slot_of(system_member member) const {
  const std::int32_t found = event_.shape().find(member);
  if (found < 0) return -1;
  const value_parts& parts = event_.shape().fields[static_cast<std::size_t>(found)].parts;
  return parts.size() == 1 ? parts.front().slot : -1;
}

}  // namespace zanvik
