#include "export/xml_program.h"

#include <algorithm>

#include "export/json_names.h"

namespace zanvik {
namespace {

class xml_builder {
 public:
  xml_builder(const event_view& event, form_program& out) : shape_(event.tree()), out_(out) {}

  void write_items(const std::vector<event_item>& items) {
    for (const event_item& item : items) {
      switch (item.what) {
        case event_item::kind::element:
          write_element(shape_.elements[item.element]);
          break;
        case event_item::kind::instruction:
          write_instruction(item);
          break;
        case event_item::kind::part:
          write_part(item.part, gap::xml_content, escape_form::xml_text);
          break;
      }
    }
  }

 private:
  void write_element(const event_element& element);
  void write_attributes(const event_element& element);
  void write_instruction(const event_item& item);
  void write_part(const value_part& part, gap how, escape_form form);
  bool constant_start(const event_element& element) const;
  std::string name(std::string_view text);
  std::string attribute_name(const event_attribute& attribute);

  const event_shape& shape_;
  form_program& out_;
};

// A prefix would need its declaration, which nested templates may not have: only the declarations
// themselves keep their colon.
std::string xml_builder::name(std::string_view text) {
  bool lossy = false;
  std::string good = xml_name(text, lossy);
  out_.set_lossy(lossy);
  return good;
}

void xml_builder::write_part(const value_part& part, gap how, escape_form form) {
  if (part.slot >= 0) {
    out_.add(how, part.slot);
  } else {
    out_.escaped(part.text, form);
  }
}

std::string xml_builder::attribute_name(const event_attribute& attribute) {
  constexpr std::string_view declaration = "xmlns";
  std::string value;
  const bool declares = attribute.name.starts_with(declaration);
  const bool constant = constant_text(attribute.value, value);
  if (!declares) return name(attribute.name);
  // Readers refuse empty ones, and the two that XML keeps for itself.
  const bool good = constant && !value.empty() && !value.starts_with("http://www.w3.org/XML") &&
                    !value.starts_with("http://www.w3.org/2000/xmlns");
  const std::string_view prefix = attribute.name.substr(declaration.size());
  if (prefix.empty()) return good ? std::string(declaration) : name("xmlns_");
  if (!good || !prefix.starts_with(':') || prefix.starts_with(":xml")) return name(attribute.name);
  bool lossy = false;
  const std::string kept = xml_name(prefix.substr(1), lossy);
  return lossy ? name(attribute.name) : std::string(declaration) + ":" + kept;
}

bool xml_builder::constant_start(const event_element& element) const {
  std::string ignored;
  return std::all_of(
      element.attributes.begin(), element.attributes.end(),
      [&](const event_attribute& attribute) { return constant_text(attribute.value, ignored); });
}

void xml_builder::write_element(const event_element& element) {
  const std::string tag = name(element.name);
  const std::string end_tag = "</" + tag + ">";
  const bool one_part =
      element.content.size() == 1 && element.content.front().what == event_item::kind::part;
  const value_part part = one_part ? element.content.front().part : value_part{};
  // Windows shows an array as an element for each item.
  if (one_part && part.array && constant_start(element)) {
    std::string start = "<" + tag;
    json_names names;
    for (const event_attribute& attribute : element.attributes) {
      std::string value;
      bool lossy = false;
      (void)constant_text(attribute.value, value);
      start += " " + names.take(attribute_name(attribute)) + "=\"";
      append_escaped(start, value, escape_form::xml_attribute, lossy);
      start += "\"";
      out_.set_lossy(lossy);
    }
    out_.add(gap::xml_repeated, part.slot, start, end_tag);
    return;
  }
  out_.text("<");
  out_.text(tag);
  write_attributes(element);
  const bool nothing =
      std::all_of(element.content.begin(), element.content.end(), [](const event_item& item) {
        return item.what == event_item::kind::part && item.part.slot < 0 && item.part.text.empty();
      });
  if (nothing) {
    out_.text("/>");
  } else if (one_part && part.slot >= 0) {
    out_.add(gap::xml_element, part.slot, {}, end_tag);
  } else {
    out_.text(">");
    write_items(element.content);
    out_.text(end_tag);
  }
}

void xml_builder::write_attributes(const event_element& element) {
  json_names names;
  const bool one = element.attributes.size() == 1;
  for (const event_attribute& attribute : element.attributes) {
    const std::string name = attribute_name(attribute);
    out_.text(" ");
    out_.text(one ? name : names.take(name));
    out_.text("=\"");
    for (const value_part& part : attribute.value) {
      write_part(part, gap::xml_attribute, escape_form::xml_attribute);
    }
    out_.text("\"");
  }
}

// Kept as an instruction if XML allows it; a `?>` in its data would end it.
void xml_builder::write_instruction(const event_item& item) {
  std::string target = name(item.target);
  std::string data;
  bool lossy = false;
  append_escaped(data, item.part.text, escape_form::xml_attribute, lossy);
  if (target.size() == 3 && (target[0] | 32) == 'x' && (target[1] | 32) == 'm' &&
      (target[2] | 32) == 'l') {
    target += "_";
    lossy = true;
  }
  out_.set_lossy(lossy);
  out_.text("<?" + target + " " + data + "?>");
}

}  // namespace

void build_event_xml(const event_view& event, form_program& out) {
  const event_shape& shape = event.tree();
  const bool any = std::any_of(shape.roots.begin(), shape.roots.end(), [](const event_item& item) {
    return item.what == event_item::kind::element;
  });
  if (any) {
    xml_builder(event, out).write_items(shape.roots);
  } else {
    out.text("<Event/>");
  }
}

}  // namespace zanvik
