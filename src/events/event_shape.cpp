#include "events/event_shape.h"

#include <algorithm>
#include <array>

#include "base/limits.h"
#include "base/text.h"

namespace zanvik {
namespace {

struct member_row {
  std::string_view name;
  std::string_view path;
};

constexpr std::array<member_row, system_members> members = {{
    {"Provider_Name", "System/Provider@Name"},
    {"Provider_Guid", "System/Provider@Guid"},
    {"EventSourceName", "System/Provider@EventSourceName"},
    {"EventID", "System/EventID"},
    {"Qualifiers", "System/EventID@Qualifiers"},
    {"Version", "System/Version"},
    {"Level", "System/Level"},
    {"Task", "System/Task"},
    {"Opcode", "System/Opcode"},
    {"Keywords", "System/Keywords"},
    {"SystemTime", "System/TimeCreated@SystemTime"},
    {"EventRecordID", "System/EventRecordID"},
    {"ActivityID", "System/Correlation@ActivityID"},
    {"RelatedActivityID", "System/Correlation@RelatedActivityID"},
    {"ProcessID", "System/Execution@ProcessID"},
    {"ThreadID", "System/Execution@ThreadID"},
    {"Channel", "System/Channel"},
    {"Computer", "System/Computer"},
    {"UserID", "System/Security@UserID"},
}};

bool has_elements(const event_element& element) {
  return std::any_of(element.content.begin(), element.content.end(),
                     [](const event_item& item) { return item.what == event_item::kind::element; });
}

// The name that a Data element bears as an attribute.
std::string datum_name(const event_element& element) {
  std::string name;
  for (const event_attribute& attribute : element.attributes) {
    if (attribute.name == "Name" && constant_text(attribute.value, name)) return name;
  }
  return {};
}

}  // namespace

std::string_view name_of(system_member member) {
  return members[static_cast<std::size_t>(member)].name;
}

value_parts text_of(const event_element& element) {
  value_parts parts;
  for (const event_item& item : element.content) {
    if (item.what == event_item::kind::part) parts.push_back(item.part);
  }
  return parts;
}

bool constant_text(const value_parts& parts, std::string& out) {
  out.clear();
  for (const value_part& part : parts) {
    if (part.slot != -1) return false;
    out.append(part.text);
  }
  return true;
}

std::int32_t event_shape::find_datum(std::string_view name) const {
  for (std::size_t i = 0; i < fields.size(); ++i) {
    if (fields[i].group == field_group::data && equal_nocase(fields[i].name, name)) {
      return static_cast<std::int32_t>(i);
    }
  }
  return -1;
}

std::int32_t event_shape::datum_at(std::uint32_t position) const {
  for (std::size_t i = 0; i < fields.size(); ++i) {
    if (fields[i].group == field_group::data && fields[i].position == position) {
      return static_cast<std::int32_t>(i);
    }
  }
  return -1;
}

std::vector<std::uint32_t> event_shape::find_all(std::string_view name) const {
  std::vector<std::uint32_t> found;
  unsigned unnamed = 0;
  for (std::size_t i = 0; i < fields.size(); ++i) {
    const bool no_name = fields[i].group == field_group::data && fields[i].name.empty();
    const bool named = no_name ? equal_nocase(name, "Data") ||
                                     equal_nocase(name, "param" + std::to_string(++unnamed))
                               : !name.empty() && equal_nocase(fields[i].name, name);
    const bool by_path = equal_nocase(fields[i].path, name);
    bool member = false;
    for (std::size_t m = 0; m < system_members; ++m) {
      member = member ||
               (system_[m] == static_cast<std::int32_t>(i) && equal_nocase(members[m].name, name));
    }
    if (named || by_path || member) found.push_back(static_cast<std::uint32_t>(i));
  }
  return found;
}

std::size_t event_shape::tree_bytes() const {
  std::size_t bytes = sizeof(*this) + 2 * source_bytes;
  for (const event_element& element : elements) {
    bytes += sizeof(element) + element.content.size() * sizeof(event_item) +
             element.attributes.size() * (sizeof(event_attribute) + sizeof(value_part));
  }
  return bytes;
}

void event_shape::make_hollow() {
  roots = {};
  elements = {};
  fields = {};
  has_tree = false;
  has_fields = false;
}

void event_shape::add_field(field_group group, std::string_view name, std::string path,
                            const value_parts& parts) {
  event_field field;
  field.group = group;
  field.name = name;
  field.path = std::move(path);
  field.parts = parts;
  if (group == field_group::data) field.position = data_++;
  fields.push_back(std::move(field));
}

void event_shape::list_element(const event_element& element, const std::string& path,
                               bool is_system, unsigned depth) {
  if (depth > limits::element_depth || path.size() > limits::field_path_bytes) return;
  const field_group group = is_system ? field_group::system : field_group::other;
  const bool is_data = !is_system && (element.name == "Data" || element.name == "ComplexData" ||
                                      element.name == "Binary");
  for (const event_attribute& attribute : element.attributes) {
    if (attribute.name == "xmlns" || (is_data && attribute.name == "Name")) continue;
    add_field(group, attribute.name, path + "@" + std::string(attribute.name), attribute.value);
  }
  if (has_elements(element)) {
    for (const event_item& item : element.content) {
      if (item.what != event_item::kind::element) continue;
      const event_element& child = elements[item.element];
      list_element(child, path + "/" + std::string(child.name), is_system, depth + 1);
    }
    return;
  }
  const value_parts text = text_of(element);
  if (is_data) {
    const std::string name = element.name == "Binary" ? "Binary" : datum_name(element);
    add_field(field_group::data, name, path, text);
  } else if (!text.empty()) {
    add_field(group, element.name, path, text);
  }
}

void event_shape::list_fields() {
  fields.clear();
  data_ = 0;
  std::fill(std::begin(system_), std::end(system_), -1);
  for (const event_item& root : roots) {
    if (root.what != event_item::kind::element) continue;
    for (const event_item& item : elements[root.element].content) {
      if (item.what != event_item::kind::element) continue;
      const event_element& part = elements[item.element];
      list_element(part, std::string(part.name), part.name == "System", 0);
    }
  }
  for (std::size_t i = fields.size(); i-- > 0;) {
    for (std::size_t m = 0; m < system_members; ++m) {
      if (fields[i].path == members[m].path) system_[m] = static_cast<std::int32_t>(i);
    }
  }
  has_fields = true;
  for (std::size_t m = 0; m < system_members; ++m) {
    if (system_[m] < 0) continue;
    const value_parts& parts = fields[static_cast<std::size_t>(system_[m])].parts;
    if (parts.size() == 1) slots_[m] = std::max(parts.front().slot, -1);
  }
  for (const event_field& field : fields) {
    new_bytes += sizeof(field) + field.path.size() + field.parts.size() * sizeof(value_part);
  }
}

}  // namespace zanvik
