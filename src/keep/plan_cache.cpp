#include "keep/plan_cache.h"

#include "base/limits.h"

namespace zanvik {

const column_plan& layout_plans::add(std::uint64_t layout_id, column_plan plan) {
  if (by_layout_.size() >= limits::cached_layouts) clear();
  const column_plan& added = by_layout_.insert_or_assign(layout_id, std::move(plan)).first->second;
  recent_[layout_id % recent_.size()] = {layout_id, &added};
  return added;
}

void layout_plans::use_with(const record_container& records) {
  if (contents_id_ != records.contents_id()) clear();
  contents_id_ = records.contents_id();
}

void layout_plans::clear() {
  by_layout_.clear();
  recent_.fill({});
}

layout_plans& plan_cache::of(const ReportCommand& command) {
  return command.all_data ? all_data_[command.skip_system_fields] : pulled_[command.pull];
}

void plan_cache::drop_if_full() {
  std::size_t held = all_data_[0].size() + all_data_[1].size();
  for (const auto& [names, plans] : pulled_) held += 1 + plans.size();
  if (held <= limits::cached_layouts) return;
  for (layout_plans& plans : all_data_) plans.clear();
  pulled_.clear();
}

}  // namespace zanvik
