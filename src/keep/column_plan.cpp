#include "keep/column_plan.h"

#include <algorithm>
#include <cstdlib>
#include <map>
#include <set>
#include <string_view>
#include <utility>

#include "base/digits.h"
#include "base/limits.h"
#include "base/text.h"
#include "events/evtx_fields.h"

namespace zanvik {
namespace {

// One collected value on its way to a column: from a slot, or from a field of the layout.
struct collected {
  std::string_view name;
  std::uint16_t number = 0;  // of a nested value; otherwise 0
  std::size_t slot = 0;
  const layout_field* field = nullptr;  // null for the value of a slot
};

std::vector<collected> collect_values(const record_fields& record) {
  std::vector<collected> list;
  for (std::size_t slot = 0; slot < record.slots.size(); ++slot) {
    const std::string& name = record.slot_name(slot);
    const std::uint16_t number = record.slots[slot].child;
    if (number != 0) {
      list.push_back({name.empty() ? std::string_view("<unnamed>") : name, number, slot, nullptr});
    } else if (!name.empty()) {
      list.push_back({name, 0, slot, nullptr});
    }
  }
  return list;
}

void drop_first(std::vector<collected>& list, std::string_view name) {
  const auto found = std::find_if(list.begin(), list.end(),
                                  [name](const auto& each) { return each.name == name; });
  if (found != list.end()) list.erase(found);
}

// Takes the provider out of the list: the first "Provider Name", and the next ones while the value
// found is empty.
// found is empty.
void take_provider(const record_fields& record, std::vector<collected>& list, column_plan& plan,
                   record_container& records) {
  std::string provider;
  const auto candidates = std::count_if(
      list.begin(), list.end(), [](const auto& each) { return each.name == "Provider Name"; });
  plan.reusable = candidates < 2;
  if (plan.provider) provider = *plan.provider;
  std::erase_if(list, [&](const collected& each) {
    if (each.name != "Provider Name" || !provider.empty()) return false;
    plan.provider_slot = static_cast<std::ptrdiff_t>(each.slot);
    plan.provider = nullptr;
    // A single candidate is used whatever it contains, so its text is not needed.
    if (candidates > 1) {
      append_column_text(provider, record, each.slot, cell_form::all_data);
    }
    return true;
  });
  if (plan.provider_slot < 0 && !plan.provider) plan.provider = records.intern_text({});
}

plan_value slot_value(const record_fields& record, const collected& source) {
  const record_slot& slot = record.slots[source.slot];
  plan_value value;
  value.slot = source.slot;
  value.one_line = slot.child == 0 && source.name == "UserData";
  value.null_if_empty = slot.child != 0;
  return value;
}

std::string column_key(const collected& source) {
  if (source.number == 0) return std::string(source.name);
  std::string key(source.number < 10 ? 1 : 0, '0');
  append_decimal(key, source.number);
  key.push_back(':');
  return key.append(source.name);
}

// Gives the plan a column for each of the values, in the order of their keys; of equal keys the
// last counts.
void plan_columns(const record_fields& record, const std::vector<collected>& list,
                  column_plan& plan, record_container& records) {
  std::vector<std::pair<std::string, const collected*>> columns;
  columns.reserve(list.size());
  for (const collected& each : list) {
    std::string& key = columns.emplace_back(column_key(each), &each).first;
    // Records found in slack keep their names: meant, they show what was there.
    if (!record.slack_search && !is_printable_name(key)) key = printable_name(key);
  }
  std::stable_sort(columns.begin(), columns.end(),
                   [](const auto& a, const auto& b) { return a.first < b.first; });
  record_shape shape;
  shape.columns.reserve(columns.size());
  for (std::size_t i = 0; i < columns.size(); ++i) {
    auto& [key, source] = columns[i];
    if (i + 1 < columns.size() && columns[i + 1].first == key) continue;
    if (source->field) {
      const std::string_view text = without_lone_comma(source->field->text);
      if (key == "Level") plan.level = level_from_text(text);
      shape.columns.push_back({std::move(key), true, std::string(text)});
    } else {
      if (key == "Level") plan.level_value = static_cast<std::ptrdiff_t>(plan.values.size());
      shape.columns.push_back({std::move(key), false, {}});
      plan.values.push_back(slot_value(record, *source));
    }
  }
  shape.value_count = plan.values.size();
  plan.shape = records.intern_shape(std::move(shape));
}

// The provider beside named fields. Meant: the record's own value does not count if its name comes
// first.
void find_pulled_provider(const record_fields& record, std::span<const std::string> names,
                          column_plan& plan, record_container& records) {
  constexpr std::string_view name = "Provider Name";
  std::string text;
  if (names.front() == name) {
    const layout_field* field = find_layout_field(*record.layout, name);
    if (field && field->name == name) text = field->text;
  } else {
    plan.provider_slot = find_slot(*record.layout, name);
    if (plan.provider_slot >= 0) return;
    find_field(record, name, text, true);
  }
  plan.provider = records.intern_text(text);
}

}  // namespace

std::uint32_t level_from_text(std::string_view text) {
  if (text.size() == 1 && text[0] >= '0' && text[0] <= '9') {  // nearly always
    return static_cast<std::uint32_t>(text[0] - '0');
  }
  return static_cast<std::uint32_t>(std::atol(std::string(text).c_str()));
}

column_plan plan_all_data(const record_fields& record, bool skip_system_fields,
                          record_container& records) {
  column_plan plan;
  std::vector<collected> list = collect_values(record);
  for (const layout_field& field : record.layout->fields) {
    if (field.name == "Provider Name") {
      plan.provider = records.intern_text(field.text);
    } else {
      list.push_back({field.name, 0, 0, &field});
    }
  }
  // The first "EventRecordID" stays: meant, although the similar fields are removed.
  if (skip_system_fields) {
    drop_first(list, "EventID");
    drop_first(list, "SystemTime");
  }
  take_provider(record, list, plan, records);
  plan_columns(record, list, plan, records);
  return plan;
}

column_plan without_repeats(const column_plan& plan, record_container& records) {
  column_plan bare = plan;
  record_shape shape;
  for (const shape_column& column : plan.shape->columns) {
    if (column.literal) continue;
    std::string name = column.name.substr(0, limits::cut_name_bytes);
    // Names that become equal when cut get numbers, and stay in order.
    if (name.size() < column.name.size()) {
      char digits[24];
      name.append(digits, write_decimal(digits, shape.columns.size(), 6));
    }
    shape.columns.push_back({std::move(name), false, {}});
  }
  shape.value_count = shape.columns.size();
  bare.shape = records.intern_shape(std::move(shape));
  if (plan.provider) {
    bare.provider = records.intern_text(plan.provider->substr(0, limits::cut_name_bytes));
  }
  return bare;
}

column_plan plan_pulled(const record_fields& record, std::span<const std::string> names,
                        record_container& records) {
  column_plan plan;
  plan.form = cell_form::pulled;
  plan.selects = false;
  std::string text;
  record_shape shape;
  const std::set<std::string_view> keys(names.begin(), names.end());
  for (const std::string_view key : keys) {
    const std::ptrdiff_t slot = find_slot(*record.layout, key);
    if (slot >= 0) {
      plan.selects = true;
      if (key == "Level") plan.level_value = static_cast<std::ptrdiff_t>(plan.values.size());
      shape.columns.push_back({std::string(key), false, {}});
      plan.values.push_back({static_cast<std::size_t>(slot), false, false});
      continue;
    }
    if (find_field(record, key, text, true)) plan.selects = true;
    const std::string_view value = without_lone_comma(text);
    if (key == "Level") plan.level = level_from_text(value);
    shape.columns.push_back({std::string(key), true, std::string(value)});
  }
  if (!plan.selects) return plan;
  shape.value_count = plan.values.size();
  plan.shape = records.intern_shape(std::move(shape));
  find_pulled_provider(record, names, plan, records);
  return plan;
}

}  // namespace zanvik
