// The tree of a shape: the templates' tokens, with nested templates in their places and absent
// parts left out.
#include <algorithm>

#include "base/limits.h"
#include "events/event_shapes.h"

namespace zanvik {
namespace {

// How often a template may use one slot before this is charged, record by record.
constexpr unsigned cheap_uses = 4;

class tree_builder {
 public:
  tree_builder(std::span<const event_instance> instances, std::span<const event_value> slots,
               event_shape& shape)
      : instances_(instances), slots_(slots), shape_(shape), uses_(slots.size()) {}

  void run() {
    if (!instances_.empty()) expand(0, 0);
    for (std::uint32_t slot = 0; slot < uses_.size(); ++slot) {
      if (uses_[slot] > cheap_uses) shape_.overused.emplace_back(slot, uses_[slot]);
    }
  }

 private:
  using kind = template_token_kind;

  std::vector<event_item>& content() {
    return open_.empty() ? shape_.roots : shape_.elements[open_.back()].content;
  }

  void expand(std::size_t number, unsigned depth);
  void keep_unplaced(const event_instance& instance, unsigned depth);
  bool is_unplaced(std::uint32_t slot) const { return uses_[slot] == 0 && !slots_[slot].absent(); }
  void open(std::string_view name);
  void close();
  void add_slot(const event_instance& instance, const template_token& token, unsigned depth);
  void add_part(value_part part);
  void end_attribute();

  std::span<const event_instance> instances_;
  std::span<const event_value> slots_;
  event_shape& shape_;
  std::vector<unsigned> uses_;
  std::vector<std::uint32_t> open_;
  unsigned too_deep_ = 0;  // elements that are open and were left out
  bool in_attribute_ = false;
  bool optional_absent_ = false;  // the attribute at hand is an absent optional slot
};

void tree_builder::expand(std::size_t number, unsigned depth) {
  const event_instance& instance = instances_[number];
  const event_template& body = *instance.body;
  shape_.no_template = shape_.no_template || body.missing;
  shape_.cut = shape_.cut || body.cut;
  shape_.source_bytes += body.source_bytes;
  event_item instruction;
  for (const template_token& token : body.tokens) {
    const std::string_view text = body.text_of(token);
    if (token.kind != kind::text && token.kind != kind::slot) end_attribute();
    switch (token.kind) {
      case kind::open_element:
        open(text);
        break;
      case kind::attribute:
        if (too_deep_ != 0 || open_.empty()) break;
        shape_.elements[open_.back()].attributes.push_back({text, {}});
        in_attribute_ = true;
        break;
      case kind::end_start_tag:
        break;
      case kind::text:
        add_part({-1, text, false});
        break;
      case kind::slot:
        add_slot(instance, token, depth);
        break;
      case kind::pi_target:
        instruction.what = event_item::kind::instruction;
        instruction.target = text;
        break;
      case kind::pi_data:
        instruction.part.text = text;
        if (too_deep_ == 0) content().push_back(instruction);
        break;
      case kind::end_element:
        close();
        break;
    }
  }
  if (body.cut) keep_unplaced(instance, depth);
}

// A template that broke off has lost the places of the slots behind: their values stand at the end
// of the event, as data without names.
void tree_builder::keep_unplaced(const event_instance& instance, unsigned depth) {
  const bool in_root = open_.empty();
  if (in_root) {
    const auto root = std::find_if(
        shape_.roots.begin(), shape_.roots.end(),
        [](const event_item& item) { return item.what == event_item::kind::element; });
    if (root == shape_.roots.end()) return;
    open_.push_back(root->element);
  }
  const std::uint32_t end = instance.first_slot + instance.slot_count;
  for (std::uint32_t slot = instance.first_slot; slot < end; ++slot) {
    if (!is_unplaced(slot) || slots_[slot].child == 0 || depth >= limits::nesting_depth) continue;
    ++uses_[slot];
    expand(slots_[slot].child, depth + 1);
  }
  bool any = false;
  for (std::uint32_t slot = instance.first_slot; slot < end; ++slot) {
    if (!is_unplaced(slot)) continue;
    if (!any) open("EventData");
    any = true;
    open("Data");
    ++uses_[slot];
    add_part({static_cast<std::int32_t>(slot), {}, slots_[slot].is_array()});
    close();
  }
  if (any) close();
  if (in_root) open_.pop_back();
}

void tree_builder::open(std::string_view name) {
  if (too_deep_ != 0 || open_.size() >= limits::element_depth) {
    ++too_deep_;
    shape_.cut = true;
    return;
  }
  event_item item;
  item.what = event_item::kind::element;
  item.element = static_cast<std::uint32_t>(shape_.elements.size());
  content().push_back(item);
  shape_.elements.push_back({name, {}, {}});
  open_.push_back(item.element);
}

void tree_builder::close() {
  if (too_deep_ != 0) {
    --too_deep_;
  } else if (!open_.empty()) {
    open_.pop_back();
  }
}

void tree_builder::add_slot(const event_instance& instance, const template_token& token,
                            unsigned depth) {
  if (token.slot >= instance.slot_count) {
    optional_absent_ = token.optional;
    add_part({absent_slot, {}, false});
    return;
  }
  const std::uint32_t slot = instance.first_slot + token.slot;
  const event_value& value = slots_[slot];
  ++uses_[slot];
  if (value.is_nested() && value.child != 0) {
    // An instance is in one place; where it is used again, it shows nothing.
    if (uses_[slot] == 1 && !in_attribute_ && depth < limits::nesting_depth) {
      expand(value.child, depth + 1);
    }
    return;
  }
  optional_absent_ = token.optional && value.absent();
  add_part({static_cast<std::int32_t>(slot), {}, value.is_array()});
}

void tree_builder::add_part(value_part part) {
  if (too_deep_ != 0) return;
  if (in_attribute_) {
    shape_.elements[open_.back()].attributes.back().value.push_back(part);
    return;
  }
  event_item item;
  item.part = part;
  content().push_back(item);
}

// An attribute with only an absent optional value is left out, as Windows leaves it out.
void tree_builder::end_attribute() {
  if (!in_attribute_) return;
  in_attribute_ = false;
  auto& attributes = shape_.elements[open_.back()].attributes;
  if (optional_absent_ && attributes.back().value.size() == 1) attributes.pop_back();
  optional_absent_ = false;
}

}  // namespace

void build_shape(std::span<const event_instance> instances, std::span<const event_value> slots,
                 event_shape& shape) {
  shape.has_tree = true;
  shape.has_fields = false;
  shape.source_bytes = 0;
  shape.overused.clear();
  tree_builder(instances, slots, shape).run();
  shape.new_bytes += shape.tree_bytes();
}

}  // namespace zanvik
