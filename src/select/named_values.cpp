#include "select/named_values.h"

#include "base/limits.h"

namespace zanvik {
namespace {

// Maximum number of remembered places; beyond this the cache is emptied.
constexpr std::size_t places_max = std::size_t{1} << 20;

}  // namespace

std::size_t named_values::add(std::string_view name) {
  const auto [entry, added] = numbers_.try_emplace(std::string(name), names_.size());
  if (added) names_.push_back({entry->first, 0, {}});
  return entry->second;
}

void named_values::start_record(const record_fields& record) {
  record_ = &record;
  ++record_count_;
  if (places_ && record.layout->id == layout_id_ && layout_id_ != 0) return;
  places_ = &places_of(*record.layout);
  layout_id_ = record.layout->id;
}

std::vector<named_values::place>& named_values::places_of(const record_layout& layout) {
  if (layout.id == 0) {
    own_places_.assign(names_.size(), {});
    return own_places_;
  }
  const auto known = layouts_.find(layout.id);
  if (known != layouts_.end()) return known->second;
  if (layouts_.size() >= limits::cached_layouts || layouts_.size() * names_.size() > places_max) {
    layouts_.clear();
  }
  return layouts_.try_emplace(layout.id, names_.size()).first->second;
}

named_values::place named_values::find(const record_layout& layout, std::string_view name) const {
  const std::ptrdiff_t slot = find_slot(layout, name);
  if (slot >= 0) return {place::slot, static_cast<std::uint32_t>(slot)};
  const layout_field* field = find_layout_field(layout, name);
  if (!field) return {place::none, 0};
  return {place::field, static_cast<std::uint32_t>(field - layout.fields.data())};
}

std::optional<std::string_view> named_values::text(std::size_t name) {
  place& at = (*places_)[name];
  name_state& state = names_[name];
  if (at.kind == place::unknown) at = find(*record_->layout, state.name);
  if (at.kind == place::none) return std::nullopt;
  // By index, not by address: the layout may be another object with the same content.
  if (at.kind == place::field) return record_->layout->fields[at.index].text;
  if (state.record != record_count_) {
    state.record = record_count_;
    state.text.clear();
    append_slot_text(state.text, *record_, at.index);
  }
  return state.text;
}

}  // namespace zanvik
