#include "select/text_search.h"

#include <algorithm>

#include "base/limits.h"
#include "base/text.h"

namespace zanvik {
namespace {

// Every character, in lower case, that the text of a value of these types may contain: numbers in
// either base, times, GUIDs, SIDs, "true", "false", "inf", "nan".
constexpr std::string_view closed_text_characters = "0123456789abcdefx-+.:/ silnrtu";

}  // namespace

text_search::text_search(std::string_view text)
    : text_(text),
      only_in_free_text_(to_lower(text).find_first_not_of(closed_text_characters) !=
                         std::string::npos) {}

bool text_search::matches(const record_fields& record) {
  if (layout_holds(*record.layout)) return true;
  for (std::size_t slot = 0; slot < record.slots.size(); ++slot) {
    if (slot_holds(record, slot)) return true;
  }
  return false;
}

bool text_search::layout_holds(const record_layout& layout) {
  if (layout.id != 0 && layout.id == layout_id_) return layout_answer_;
  const auto decide = [&] {
    return std::any_of(layout.names.begin(), layout.names.end(),
                       [&](const std::string& name) { return contains_nocase(name, text_); }) ||
           std::any_of(layout.fields.begin(), layout.fields.end(), [&](const layout_field& field) {
             return contains_nocase(field.text, text_);
           });
  };
  if (layout.id == 0) return decide();
  layout_id_ = layout.id;
  const auto known = by_layout_.find(layout.id);
  if (known != by_layout_.end()) return layout_answer_ = known->second;
  if (by_layout_.size() >= limits::cached_layouts) by_layout_.clear();
  layout_answer_ = decide();
  by_layout_.emplace(layout.id, layout_answer_);
  return layout_answer_;
}

bool text_search::slot_holds(const record_fields& record, std::size_t slot) {
  if (!record.slot_texts.empty()) {
    if (const std::string* replaced = record.replaced_text(slot)) {
      return contains_nocase(*replaced, text_);
    }
  }
  const record_slot& entry = record.slots[slot];
  if (only_in_free_text_ && !is_free_text(entry.type)) return false;
  // A unit of 2 bytes becomes at most 3 bytes.
  if (entry.type == value_type::utf16 && entry.size / 2 * 3 < text_.size()) return false;
  const raw_value value = record.value(slot);
  const std::size_t bound = value_text_bound(value);
  if (buffer_.size() < bound) buffer_.resize(bound);
  unsigned kinds = kind_plain;
  const char* end = writer_.write(buffer_.data(), value, kinds);
  return contains_nocase({buffer_.data(), static_cast<std::size_t>(end - buffer_.data())}, text_);
}

}  // namespace zanvik
