#include "sigma/log_sources.h"

#include <algorithm>
#include <cassert>
#include <charconv>

#include "base/fold_case.h"
#include "sigma/rule_reader.h"

namespace zanvik::sigma {

extern const char* const built_in_log_sources;  // log_sources.yml, put in by the build

namespace {

std::vector<std::string> folded_list(const yaml_node* node) {
  std::vector<std::string> out;
  if (node == nullptr) return out;
  if (node->is_text()) out.push_back(folded(node->text));
  for (const yaml_node& item : node->items) {
    if (!item.is_text()) throw rule_problem{item.line, "not a list of texts"};
    out.push_back(folded(item.text));
  }
  return out;
}

event_source read_event_source(const yaml_node& node) {
  event_source out;
  if (!node.is_map()) throw rule_problem{node.line, "an item of 'events' is no map"};
  out.channels = folded_list(node.find("channel"));
  out.providers = folded_list(node.find("provider"));
  for (const std::string& id : folded_list(node.find("event_id"))) {
    std::uint32_t number = 0;
    const auto [end, error] = std::from_chars(id.data(), id.data() + id.size(), number);
    if (error != std::errc() || end != id.data() + id.size()) {
      throw rule_problem{node.line, "'" + id + "' is no event ID"};
    }
    out.event_ids.push_back(number);
  }
  if (const yaml_node* where = node.find("where")) {
    for (std::size_t i = 0; i < where->keys.size(); ++i) {
      out.condition.parts.push_back(read_field(where->keys[i], where->items[i], {}, out.where));
    }
  }
  if (const yaml_node* fields = node.find("fields")) {
    for (std::size_t i = 0; i < fields->keys.size(); ++i) {
      out.fields.emplace_back(fields->keys[i], fields->items[i].text);
    }
  }
  return out;
}

log_source_entry read_entry(const yaml_node& node) {
  log_source_entry out;
  if (!node.is_map()) throw rule_problem{node.line, "an item of 'sources' is no map"};
  out.source.category = node.text_of("category");
  out.source.product = node.text_of("product");
  out.source.service = node.text_of("service");
  out.reason = node.text_of("reason");
  if (const yaml_node* events = node.find("events")) {
    for (const yaml_node& item : events->items) out.events.push_back(read_event_source(item));
  }
  return out;
}

bool same_or_either_none(const std::string& a, const std::string& b) {
  return a.empty() || b.empty() || a == b;
}

bool any_common(const std::vector<std::string>& a, const std::vector<std::string>& b) {
  return std::any_of(a.begin(), a.end(),
                     [&](const auto& x) { return std::find(b.begin(), b.end(), x) != b.end(); });
}

std::string name_of(const rule_log_source& source) {
  std::string out;
  for (const auto& [key, value] : {std::pair{"product", &source.product},
                                   {"category", &source.category},
                                   {"service", &source.service}}) {
    if (!value->empty()) out += (out.empty() ? "" : ", ") + std::string(key) + " " + *value;
  }
  return out;
}

template <typename List, typename Value>
bool empty_or_has(const List& list, const Value& value) {
  return list.empty() || std::find(list.begin(), list.end(), value) != list.end();
}

}  // namespace

bool concerns(const event_source& source, std::string_view channel, std::string_view provider,
              std::optional<std::uint32_t> event_id) {
  return empty_or_has(source.channels, channel) && empty_or_has(source.providers, provider) &&
         empty_or_has(source.event_ids, event_id);
}

std::optional<std::uint32_t> event_id_of(std::string_view text) {
  const auto number = number_of(text);
  if (!number || *number < 0 || *number > UINT32_MAX) return std::nullopt;
  return static_cast<std::uint32_t>(*number);
}

std::string_view event_source::field_name(std::string_view rule_field) const {
  for (const auto& [name, event_name] : fields) {
    if (name == rule_field) return event_name;
  }
  return rule_field;
}

log_source_table::log_source_table() {
  std::size_t line = 0;
  [[maybe_unused]] const std::string error = add(built_in_log_sources, line);
  assert(error.empty());
}

std::string log_source_table::add(const std::string& yaml, std::size_t& line) {
  const yaml_file file = read_yaml(yaml);
  line = file.error_line;
  if (!file.error.empty()) return file.error;
  std::vector<log_source_entry> added;
  try {
    for (const yaml_node& document : file.documents) {
      const yaml_node* const sources = document.find("sources");
      if (sources == nullptr || !sources->is_list()) {
        throw rule_problem{document.line, "there is no list 'sources'"};
      }
      for (const yaml_node& item : sources->items) added.push_back(read_entry(item));
    }
  } catch (const rule_problem& problem) {
    line = problem.line;
    return problem.why;
  }
  for (log_source_entry& entry : added) {
    const auto same = [&](const log_source_entry& e) {
      return e.source.category == entry.source.category &&
             e.source.product == entry.source.product && e.source.service == entry.source.service;
    };
    std::erase_if(entries_, same);
    entries_.push_back(std::move(entry));
  }
  return {};
}

std::vector<event_source> log_source_table::find(const rule_log_source& source,
                                                 std::string& reason) const {
  const auto entry_for = [&](const std::string& category,
                             const std::string& service) -> const log_source_entry* {
    for (const log_source_entry& e : entries_) {
      if (e.source.category == category && e.source.service == service &&
          same_or_either_none(e.source.product, source.product)) {
        return &e;
      }
    }
    return nullptr;
  };
  reason = "log source (" + name_of(source) + ") " +
           (source.product == "windows" ? "is not in the table of log sources"
                                        : "does not concern Windows event logs");
  // With a category and a service: the events of the category that are in the service's channels.
  const bool both = !source.category.empty() && !source.service.empty();
  const log_source_entry* const entry = entry_for(source.category, both ? "" : source.service);
  const log_source_entry* const service = both ? entry_for("", source.service) : nullptr;
  if (const auto* whole = both ? entry_for(source.category, source.service) : nullptr) {
    return whole->events;
  }
  if (entry == nullptr || (both && service == nullptr)) return {};
  std::vector<event_source> out = entry->events;
  if (both) {
    std::erase_if(out, [&](const event_source& e) {
      return std::none_of(service->events.begin(), service->events.end(),
                          [&](const auto& s) { return any_common(e.channels, s.channels); });
    });
  }
  if (!entry->reason.empty()) reason = "log source: " + entry->reason;
  return out;
}

}  // namespace zanvik::sigma
