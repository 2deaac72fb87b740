#include "keep/evt_record_keeper.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include "base/limits.h"
#include "base/number_text.h"

namespace zanvik {
namespace {

// Writes the cell of a value to `out`, which has room for it and the longest head. Returns its end.
char* write_cell(char* out, const evt_record& record, evt_value_source source) {
  bool marked = false;
  char* const end = write_evt_value(out + 1, record, source, marked);
  return finish_cell(out, end, marked);
}

}  // namespace

void evt_record_keeper::keep(const evt_record& record) {
  if (contents_id_ != records_.contents_id()) start_contents();
  const column_plan& plan = plan_for(record);
  LogRecord kept;
  kept.report_entry_id = command_.index;
  kept.level = record.event_type;
  kept.time = record.time;
  kept.event_id = record.short_event_id();
  kept.record_number = record.record_num;
  kept.flags = record_inside_range;  // old records too: nothing distinguishes them
  kept.is_evtx = false;
  kept.description = description_;
  kept.shape = plan.shape;
  kept.values = write_block(record, plan);
  records_.add(kept);
}

void evt_record_keeper::start_contents() {
  contents_id_ = records_.contents_id();
  description_ = records_.intern_text(command_.name);
  plans_.clear();
  plan_columns_ = 0;
  if (!command_.all_data) named_plan_ = make_plan(evt_fields_named(command_.pull));
}

const evt_record_keeper::column_plan& evt_record_keeper::plan_for(const evt_record& record) {
  if (!command_.all_data) return named_plan_;
  const bool has_sid = !record.sid.empty();
  std::size_t strings = record.strings.size();
  const auto key = [&] { return 2 * strings + (has_sid ? 1 : 0); };
  if (key() < plans_.size() && plans_[key()]) return *plans_[key()];
  // Only a crafted log has so many layouts. Its further records are kept without their strings.
  if (strings > limits::evt_layout_columns - plan_columns_) strings = 0;
  if (key() >= plans_.size()) plans_.resize(key() + 1);
  auto& plan = plans_[key()];
  if (!plan) {
    plan = std::make_unique<column_plan>(make_plan(evt_fields_all(strings, has_sid)));
    plan_columns_ += strings;
  }
  return *plan;
}

evt_record_keeper::column_plan evt_record_keeper::make_plan(std::vector<evt_column> columns) {
  apply_labels(columns);
  const auto by_name = [](const evt_column& a, const evt_column& b) { return a.name < b.name; };
  const auto same_name = [](const evt_column& a, const evt_column& b) { return a.name == b.name; };
  std::stable_sort(columns.begin(), columns.end(), by_name);
  columns.erase(std::unique(columns.begin(), columns.end(), same_name), columns.end());
  column_plan plan;
  record_shape shape;
  for (evt_column& column : columns) {
    shape.columns.push_back({std::move(column.name), false, {}});
    plan.sources.push_back(column.source);
  }
  shape.value_count = plan.sources.size();
  plan.shape = records_.intern_shape(std::move(shape));
  return plan;
}

// A command may have its own names for strings, by their number.
void evt_record_keeper::apply_labels(std::vector<evt_column>& columns) const {
  if (command_.param_labels.empty()) return;
  for (evt_column& column : columns) {
    if (column.name.find("param_") == std::string::npos) continue;
    const auto number = unsigned_from_text(std::string_view(column.name).substr(6));
    if (!number || *number > 0xffff) continue;
    const auto label = command_.param_labels.find(static_cast<std::uint16_t>(*number));
    if (label != command_.param_labels.end()) column.name = label->second;
  }
}

const char* evt_record_keeper::write_block(const evt_record& record, const column_plan& plan) {
  if (plan.sources.empty()) return nullptr;
  std::size_t bound = 0;
  for (const evt_value_source source : plan.sources) {
    bound += evt_value_bound(record, source) + max_cell_head;
  }
  char* const block = records_.arena().reserve(bound);
  char* end = block;
  for (const evt_value_source source : plan.sources) end = write_cell(end, record, source);
  records_.arena().keep(static_cast<std::size_t>(end - block));
  return block;
}

}  // namespace zanvik
