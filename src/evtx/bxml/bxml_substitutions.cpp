// Substitutions, template instances and slot tables inside a stream of binary XML.
#include <string>
#include <string_view>
#include <utility>

#include "base/digits.h"
#include "evtx/bxml/bxml_decode_state.h"
#include "evtx/values/value_text.h"

namespace zanvik {

bool bxml_decode::substitution(bool optional) {
  const auto number = bytes_.at<std::uint16_t>(position_ + 1);
  const auto type = bytes_.at<std::uint8_t>(position_ + 3);
  if (!number || !type || !spend(4)) return false;
  const bool in_range = cursor_.slots && *number < cursor_.slots->size();
  if (!items_.empty() && !name_slot(*number, optional)) return false;
  after_reference_ = false;
  if (in_range) {
    if (!write_slot(*number, optional)) return false;
  } else if (text_) {
    text_->push_back('[');
    append_decimal(*text_, std::uint64_t{*number});
    text_->push_back('/');
    append_decimal(*text_, std::uint64_t{*type});
    text_->push_back(']');
  }
  consume(4);
  after_substitution_ = true;
  return true;
}

// Names the slot after the newest item, which is used up: an optional substitution takes the
// element as a prefix, a normal one only under `Provider`. Returns false, with nothing named, if
// the prefix would exceed the budget.
bool bxml_decode::name_slot(std::uint32_t number, bool optional) {
  std::string name;
  if (items_.size() > 1) {
    const std::string_view element = items_.front().text;
    if (optional || element == "Provider") {
      if (!spend(element.size())) return false;
      name.append(element).append(" ");
    }
  }
  name += items_.back().text;
  items_.pop_back();
  if (!cursor_.slots || number >= cursor_.slots->size()) return true;
  (*cursor_.slots)[number].name = std::move(name);
  slot_named_ = true;  // delays the next flush
  return true;
}

// Writes the value of a slot, or decodes it if it is nested binary XML. Returns false if the text
// would exceed the budget: a body may name one long value again and again.
bool bxml_decode::write_slot(std::uint32_t number, bool optional) {
  slot_entry& slot = (*cursor_.slots)[number];
  if (slot.type == value_type::bxml) {
    // A body's nested slots are decoded with their own template later, except for user data.
    if (!template_body_) {
      decode_nested(slot.offset, &slot.children, false);
    } else if (optional && slot.name == "UserData") {
      decode_nested(slot.offset, &slot.children, true);
    }
    return true;
  }
  return !text_ || write_value(number);
}

// The same for a value that is not binary XML. There is a text.
bool bxml_decode::write_value(std::uint32_t number) {
  const slot_entry& slot = (*cursor_.slots)[number];
  raw_value value = raw_value_at(bytes_, slot.offset, slot.type, slot.size);
  value.full_sid = chunk_.full_sids;
  if (!spend(value_source_bytes(value) + slot.text.size())) return false;
  if (start_tag_open_) text_->push_back('"');
  const std::size_t before = text_->size();
  if (cursor_.places) cursor_.places->push_back({before, number});
  if (slot.composed) {
    text_->append(slot.text);
  } else {
    append_value_text(*text_, value);
  }
  if (text_->size() == before) append_hex_bytes(*text_, bytes_.bytes_at(slot.offset, slot.size));
  if (start_tag_open_) text_->push_back('"');
  return true;
}

void bxml_decode::decode_nested(std::uint64_t at, std::vector<slot_entry>* slots,
                                bool template_body) {
  bxml_cursor nested{chunk_};
  nested.position = at;
  nested.slots = slots;
  nested.template_body = template_body;
  nested.budget = cursor_.budget;
  nested.depth = cursor_.depth + 1;
  decode_bxml(text_, nullptr, nested);
}

// Returns the length to skip: the head, and also the head of a definition that directly follows it,
// so that the decode continues in the body. 0 if the definition does not exist.
std::uint64_t bxml_decode::template_instance(const instance_head& head, std::uint64_t at) {
  const auto link = bytes_.at<std::uint32_t>(head.definition);
  if (!link) return 0;
  // A link word from 1 to 28 marks a head that cannot be used; it is not skipped.
  const bool usable = *link == 0 || *link > 28;
  if (head.definition == at + head.length) {
    return head.length + (usable ? evtx_layout::definition_head_bytes : 0);
  }
  walk_slot_table(at + head.length);
  return head.length;
}

// Skips a slot table for which there are no slots, decoding the nested streams among its values.
// Returns its length, 0 if it is refused.
std::uint64_t bxml_decode::walk_slot_table(std::uint64_t at) {
  const auto count = bytes_.at<std::uint32_t>(at);
  if (!count) return 0;
  if (*count > limits::slots_per_table) {
    write("... aborting, since number of entries = ");
    if (text_) append_hex(*text_, *count, 1);
    return 0;
  }
  if (!spend(4 + 4 * *count)) return 0;
  std::uint64_t value = at + 4 + 4 * *count;
  for (std::uint32_t i = 0; i < *count; ++i) {
    std::uint64_t size = bytes_.at_or_zero<std::uint16_t>(at + 4 + 4 * i);
    const auto type = bytes_.at_or_zero<std::uint16_t>(at + 6 + 4 * i);
    if (value >= chunk_.bound || size >= chunk_.bound - value) {
      size = (chunk_.bound - value) & 0xffff;
    }
    if (type == value_type::bxml && size != 0 && !template_body_) {
      decode_nested(value, nullptr, false);
    }
    value += size;
  }
  return value - at;
}

}  // namespace zanvik
