// JSON lines: the tree of the event, as tools of the field know it.
#include <string>
#include <vector>

#include "export/event_form.h"
#include "export/form_program.h"
#include "export/json_names.h"

namespace zanvik {
namespace {

// Turns the tree of a shape into the program that writes it.
class tree_writer {
 public:
  tree_writer(const event_view& event, form_program& out)
      : shape_(event.tree()), slots_(event.slots()), out_(out) {}

  void write() {
    json_names names;
    (void)names.take("zanvik");
    out_.text("{");
    if (!write_members(shape_.roots, names, true)) out_.text("\"Event\":null");
    write_origin();
    out_.text("}\n");
  }

 private:
  static bool is_element(const event_item& item) { return item.what == event_item::kind::element; }
  bool is_leaf(const event_element& element) const;
  bool is_datum(const event_element& element) const {
    return element.name == "Data" && element.attributes.size() <= 1 && is_leaf(element) &&
           (element.attributes.empty() || element.attributes.front().name == "Name");
  }

  bool write_members(const std::vector<event_item>& items, json_names& names, bool first);
  void write_unnamed(const std::vector<event_item>& items);
  void write_element(const event_element& element);
  void write_attributes(const event_element& element);
  void write_value(const value_parts& parts, gap how);
  void write_origin();
  void member(std::string_view name, bool& first);
  std::string value_of(const value_parts& parts) const;

  const event_shape& shape_;
  std::span<const event_value> slots_;
  form_program& out_;
};

bool tree_writer::is_leaf(const event_element& element) const {
  for (const event_item& item : element.content) {
    if (item.what != event_item::kind::part) return false;
  }
  return true;
}

void tree_writer::member(std::string_view name, bool& first) {
  out_.text(first ? "\"" : ",\"");
  first = false;
  out_.escaped(name, escape_form::json);
  out_.text("\":");
}

// The text of parts now, for a name that only the record has.
std::string tree_writer::value_of(const value_parts& parts) const {
  std::string text;
  if (constant_text(parts, text)) return text;
  text.clear();
  out_.set_once();
  for (const value_part& part : parts) append_text(text, part_value(part, slots_));
  return text;
}

// Writes a member for each element and instruction. `first` is false if there are some before them.
// Returns whether there are any members now.
bool tree_writer::write_members(const std::vector<event_item>& items, json_names& names,
                                bool first) {
  bool unnamed_written = false;
  for (const event_item& item : items) {
    if (item.what == event_item::kind::instruction) {
      member(names.take("?" + std::string(item.target)), first);
      out_.text("\"");
      out_.escaped(item.part.text, escape_form::json);
      out_.text("\"");
      continue;
    }
    if (!is_element(item)) continue;
    const event_element& element = shape_.elements[item.element];
    if (!is_datum(element)) {
      member(names.take(element.name), first);
      write_element(element);
    } else if (!element.attributes.empty()) {
      member(names.take(value_of(element.attributes.front().value)), first);
      write_value(text_of(element), gap::json_value);
    } else if (!unnamed_written) {
      unnamed_written = true;
      member(names.take("Data"), first);
      write_unnamed(items);
    }
  }
  return !first;
}

// All data without a name, in the place of the first.
void tree_writer::write_unnamed(const std::vector<event_item>& items) {
  std::vector<value_parts> data;
  bool arrays = false;
  for (const event_item& item : items) {
    if (!is_element(item)) continue;
    const event_element& element = shape_.elements[item.element];
    if (!is_datum(element) || !element.attributes.empty()) continue;
    data.push_back(text_of(element));
    arrays = arrays || (data.back().size() == 1 && data.back().front().array);
  }
  if (data.size() == 1 && data.front().empty()) {
    out_.text("null");
    return;
  }
  const bool absent = data.size() == 1 && data.front().size() == 1 &&
                      part_value(data.front().front(), slots_).absent();
  if (absent) {
    out_.text("null");
    return;
  }
  out_.text("{\"#text\":");
  if (data.size() == 1) {
    write_value(data.front(), gap::json_datum);
    out_.text("}");
    return;
  }
  out_.text("[");
  for (std::size_t i = 0; i < data.size(); ++i) {
    if (data[i].size() == 1 && data[i].front().array) {
      out_.add(gap::json_items, data[i].front().slot);
      continue;
    }
    write_value(data[i], gap::json_value);
    if (arrays || i + 1 != data.size()) out_.text(",");
  }
  if (arrays) out_.add(gap::json_list_end);
  out_.text("]}");
}

void tree_writer::write_element(const event_element& element) {
  const value_parts text = text_of(element);
  if (element.attributes.empty() && is_leaf(element)) {
    write_value(text, gap::json_value);
    return;
  }
  json_names names;
  (void)names.take("#attributes");
  (void)names.take("#text");
  out_.text("{");
  bool first = true;
  if (!element.attributes.empty()) {
    member("#attributes", first);
    write_attributes(element);
  }
  first = !write_members(element.content, names, first);
  if (!text.empty()) {
    member("#text", first);
    write_value(text, gap::json_value);
  }
  out_.text("}");
}

void tree_writer::write_attributes(const event_element& element) {
  json_names names;
  bool first = true;
  out_.text("{");
  for (const event_attribute& attribute : element.attributes) {
    member(names.take(attribute.name), first);
    write_value(attribute.value, gap::json_value);
  }
  out_.text("}");
}

// The value of the parts: null for none, typed for one slot, a text for anything else.
void tree_writer::write_value(const value_parts& parts, gap how) {
  if (parts.empty() || (parts.size() == 1 && parts.front().slot == absent_slot)) {
    out_.text("null");
    return;
  }
  if (parts.size() == 1 && parts.front().slot >= 0) {
    out_.add(how, parts.front().slot);
    return;
  }
  out_.text("\"");
  for (const value_part& part : parts) {
    if (part.slot >= 0) {
      out_.add(gap::json_text, part.slot);
    } else {
      out_.escaped(part.text, escape_form::json);
    }
  }
  out_.text("\"");
}

void tree_writer::write_origin() {
  out_.text(",\"zanvik\":{\"log\":\"");
  out_.add(gap::log_path);
  out_.text("\",\"offset\":");
  out_.add(gap::file_offset);
  out_.text(",\"record\":");
  out_.add(gap::record_number);
  out_.text(",\"written\":\"");
  out_.add(gap::written);
  out_.text("\"");
  out_.add(gap::json_oddities);
  out_.text("}");
}

class json_form : public event_form {
 public:
  void start_log(const log_source& source) override {
    log_.clear();
    log_lossy_ = false;
    append_escaped(log_, source.path, escape_form::json, log_lossy_);
  }

  void write(output_buffer& out, const event_view& event) override {
    const form_program& program =
        programs_.of(event, [&](form_program& fresh) { tree_writer(event, fresh).write(); });
    program.write(out, event, log_, log_lossy_);
  }

  void add_copies(std::string& event, std::uint64_t copies) const override {
    put_before(event, "}}\n", ",\"copies\":" + std::to_string(copies));
  }

 private:
  form_programs programs_;
  std::string log_;
  bool log_lossy_ = false;
};

}  // namespace

std::unique_ptr<event_form> make_json_form(const form_options&) {
  return std::make_unique<json_form>();
}

}  // namespace zanvik
