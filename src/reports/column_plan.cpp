#include "reports/column_plan.h"

#include <algorithm>
#include <cstdlib>
#include <map>
#include <string_view>
#include <utility>

#include "support/qx_digits.h"

namespace zanvik {
namespace {

// One collected value on its way to a column: of a slot, or of a field of the layout.
struct collected {
  std::string_view name;
  std::uint16_t number = 0;  // a nested value's; 0 otherwise
  std::size_t slot = 0;
  const layout_field* field = nullptr;  // null for a slot's
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

// A value that is a lone comma, which is what a line break becomes, is stored empty.
std::string_view without_lone_comma(std::string_view text) {
  return text == "," ? std::string_view() : text;
}

// Takes the provider out of the list: the first "Provider Name", and the next as long as what was
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
    // A single candidate is taken whatever it holds, so its text need not be looked at.
    if (candidates > 1) {
      append_value_text(provider, record.value(each.slot), value_form::all_data);
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

}  // namespace

std::uint32_t level_from_text(std::string_view text) {
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
  // The first "EventRecordID" stays: meant, though its fellows go.
  if (skip_system_fields) {
    drop_first(list, "EventID");
    drop_first(list, "SystemTime");
  }
  take_provider(record, list, plan, records);

  std::map<std::string, const collected*> columns;
  for (const collected& each : list) columns.insert_or_assign(column_key(each), &each);
  record_shape shape;
  for (const auto& [key, source] : columns) {
    if (source->field) {
      const std::string_view text = without_lone_comma(source->field->text);
      if (key == "Level") plan.level = level_from_text(text);
      shape.columns.push_back({key, true, std::string(text)});
    } else {
      if (key == "Level") plan.level_value = static_cast<std::ptrdiff_t>(plan.values.size());
      shape.columns.push_back({key, false, {}});
      plan.values.push_back(slot_value(record, *source));
    }
  }
  shape.value_count = plan.values.size();
  plan.shape = records.intern_shape(std::move(shape));
  return plan;
}

}  // namespace zanvik
