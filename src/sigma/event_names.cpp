#include "sigma/event_names.h"

#include <string>

#include "base/text.h"
#include "base/fold_case.h"

namespace zanvik::sigma {
namespace {

// Names for members of System in documents about rules.
constexpr std::pair<std::string_view, std::string_view> other_names[] = {
    {"ComputerName", "Computer"},
    {"EventLog", "Channel"},
};

// "System/Provider@Name" -> "Provider_Name"; empty if it is not an attribute.
std::string attribute_name(std::string_view path) {
  const std::size_t at = path.rfind('@');
  if (at == std::string_view::npos) return {};
  const std::size_t slash = path.rfind('/', at);
  std::string out(path.substr(slash == std::string_view::npos ? 0 : slash + 1));
  replace_char(out, '@', '_', false);
  return out;
}

std::vector<std::string> names_of(const event_field& field) {
  std::vector<std::string> out;
  const std::string attribute = attribute_name(field.path);
  if (!attribute.empty()) out.push_back(attribute);
  // An attribute of System only has both names: "Name" alone could mean any other.
  if (attribute.empty() || field.group != field_group::system) out.push_back(field.name);
  if (field.group == field_group::data && field.name.empty()) out.back() = "Data";
  for (std::string& name : out) remove_char(name, ' ');
  return out;
}

// Whether the name is one of those by which kinds of events are distinguished before their fields
// are read.
bool tells_kind(std::string_view name) {
  return name == "EventID" || name == "Channel" || name == "Provider_Name";
}

}  // namespace

std::string_view channel_of(const event_view& event, std::string& scratch) {
  const std::string_view channel = event.text(system_member::channel, scratch);
  const log_source& log = event.source();
  if (!channel.empty() || log.kind != log_kind::evt) return channel;
  const std::size_t slash = log.path.rfind('/');
  const std::string name = folded(log.path.substr(slash == std::string::npos ? 0 : slash + 1));
  if (name.starts_with("sec")) return "Security";
  if (name.starts_with("sys")) return "System";
  return name.starts_with("app") ? "Application" : "";
}

shape_names::shape_names(const event_shape& shape) : shape_(shape) {
  for (std::uint32_t i = 0; i < shape.fields.size(); ++i) {
    for (std::string& name : names_of(shape.fields[i])) {
      auto& other = folded_[to_lower(name)];
      if (other.empty() || other.back().first != i) other.emplace_back(i, name);
      auto& same = exact_[std::move(name)];
      if (same.empty() || same.back() != i) same.push_back(i);
    }
  }
}

std::vector<std::uint32_t> shape_names::find(std::string_view name) const {
  std::vector<std::uint32_t> out;
  if (name.empty()) {
    for (std::uint32_t i = 0; i < shape_.fields.size(); ++i) out.push_back(i);
    return out;
  }
  if (const auto exact = exact_.find(name); exact != exact_.end()) {
    if (!tells_kind(name)) return exact->second;
    for (const std::uint32_t field : exact->second) {
      if (shape_.fields[field].group == field_group::system) return {field};
    }
  }
  if (const auto other = folded_.find(to_lower(std::string(name))); other != folded_.end()) {
    for (const auto& [field, called] : other->second) {
      if (called != name) out.push_back(field);
    }
  }
  if (!out.empty()) return out;
  for (const auto& [called, member] : other_names) {
    if (called == name) return find(member);
  }
  return {};
}

std::vector<std::uint32_t> fields_of_name(const event_shape& shape, std::string_view name) {
  return shape_names(shape).find(name);
}

}  // namespace zanvik::sigma
