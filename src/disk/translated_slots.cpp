#include "disk/translated_slots.h"

#include <algorithm>
#include <span>
#include <utility>

#include "base/limits.h"
#include "disk/disk_text.h"

namespace zanvik {
namespace {

using target = slot_translator::target;

std::vector<target> targets_in(const record_layout& layout, const translate_specs& specs) {
  std::vector<target> targets;
  for (std::size_t slot = 0; slot < layout.names.size(); ++slot) {
    const auto spec = specs.find(layout.names[slot]);
    if (spec != specs.end()) targets.push_back({slot, &spec->second});
  }
  return targets;
}

void replace_slot_text(record_fields& record, std::size_t slot, std::string text) {
  auto& texts = record.slot_texts;
  const auto at = std::lower_bound(
      texts.begin(), texts.end(), slot,
      [](const slot_text& each, std::size_t wanted) { return each.slot < wanted; });
  if (at != texts.end() && at->slot == slot) {
    at->text = std::move(text);
  } else {
    texts.insert(at, {slot, std::move(text)});
  }
}

bool translate_targets(record_fields& record, std::span<const target> targets, std::size_t names) {
  bool changed = false;
  std::size_t left = names;
  std::string text;
  for (const target& each : targets) {
    if (left == 0) break;
    const raw_value value = record.value(each.slot);
    const std::span bytes(value.data, std::min<std::size_t>(value.size, value.readable));
    if (translate_value(*each.spec, bytes, text)) --left;
    if (text.empty()) continue;
    replace_slot_text(record, each.slot, text);
    changed = true;
  }
  return changed;
}

}  // namespace

bool translate_record_fields(record_fields& record, const translate_specs& specs) {
  return translate_targets(record, targets_in(*record.layout, specs), specs.size());
}

bool slot_translator::translate(record_fields& record) {
  const std::uint64_t id = record.layout->id;
  if (id == 0) return translate_record_fields(record, specs_);
  auto known = targets_.find(id);
  if (known == targets_.end()) {
    if (targets_.size() >= limits::cached_layouts) targets_.clear();
    known = targets_.emplace(id, targets_in(*record.layout, specs_)).first;
  }
  return translate_targets(record, known->second, specs_.size());
}

}  // namespace zanvik
