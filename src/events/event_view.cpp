#include "events/event_view.h"

#include <cstring>

#include "base/time_parse.h"

namespace zanvik {

event_value part_value(const value_part& part, std::span<const event_value> slots) {
  if (part.slot == -1) {
    return {reinterpret_cast<const std::byte*>(part.text.data()),
            static_cast<std::uint32_t>(part.text.size()), literal_type, 0};
  }
  return part.slot == absent_slot ? event_value{} : slots[static_cast<std::size_t>(part.slot)];
}

void event_view::build_tree() const { build_shape(instances_, slots_, *shape_); }

void event_view::list_fields() const {
  if (!shape_->has_tree) build_tree();
  shape_->list_fields();
}

event_value event_view::value(std::uint32_t field) const {
  const value_parts& parts = shape().fields[field].parts;
  return parts.size() == 1 ? part_value(parts.front(), slots_) : event_value{};
}

event_value event_view::value(system_member member) const {
  const std::int32_t slot = shape_->slot_of(member);
  if (slot >= 0) return slots_[static_cast<std::size_t>(slot)];
  const std::int32_t field = shape().find(member);
  return field < 0 ? event_value{} : value(static_cast<std::uint32_t>(field));
}

std::string_view event_view::text(std::int32_t field, std::string& scratch) const {
  if (field < 0) return {};
  const value_parts& parts = shape().fields[static_cast<std::size_t>(field)].parts;
  if (parts.size() == 1 && parts.front().slot == -1) return parts.front().text;
  scratch.clear();
  for (const value_part& part : parts) append_text(scratch, part_value(part, slots_));
  return scratch;
}

std::string_view event_view::text(system_member member, std::string& scratch) const {
  const std::int32_t slot = shape_->slot_of(member);
  if (slot < 0) return text(shape().find(member), scratch);
  scratch.clear();
  append_text(scratch, slots_[static_cast<std::size_t>(slot)]);
  return scratch;
}

bool event_view::number(system_member member, std::uint64_t& out) const {
  return as_unsigned(value(member), out);
}

std::uint64_t event_view::time() const {
  const event_value created = value(system_member::time_created);
  std::uint64_t filetime = 0;
  if (created.type == value_type::filetime && created.size == sizeof(filetime)) {
    std::memcpy(&filetime, created.data, sizeof(filetime));
    return filetime;
  }
  if (!created.absent()) {
    std::string scratch;
    filetime = parse_iso8601(std::string(text(system_member::time_created, scratch)));
  }
  return filetime != 0 ? filetime : header_.written;
}

}  // namespace zanvik
