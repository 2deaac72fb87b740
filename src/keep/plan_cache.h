// The column plans of a run, so that what a command lists of the records of a layout is computed
// once for all logs. Commands that list the same share their plans.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

#include "commands/report_command.h"
#include "keep/column_plan.h"

namespace zanvik {

// Plans by layout id, for the commands that list the same.
class layout_plans {
 public:
  // The plan for the layout, null if there is none; valid until the next `add`, `clear` or
  // `use_with`.
  const column_plan* find(std::uint64_t layout_id) {
    recent_plan& recent = recent_[layout_id % recent_.size()];
    if (recent.layout_id != layout_id) recent = {layout_id, look_up(layout_id)};
    return recent.plan;
  }
  // The layout has no plan yet. Existing plans may be dropped if there are too many.
  const column_plan& add(std::uint64_t layout_id, column_plan plan);
  // Plans point into a record container. Those made for other contents than these are dropped.
  void use_with(const record_container& records);
  void clear();
  std::size_t size() const { return by_layout_.size(); }

 private:
  // Recently found plans; most records have one of a few layouts.
  struct recent_plan {
    std::uint64_t layout_id = 0;  // not the ID of any layout
    const column_plan* plan = nullptr;
  };

  const column_plan* look_up(std::uint64_t layout_id) const {
    const auto found = by_layout_.find(layout_id);
    return found == by_layout_.end() ? nullptr : &found->second;
  }

  std::array<recent_plan, 64> recent_;
  std::unordered_map<std::uint64_t, column_plan> by_layout_;
  std::uint64_t contents_id_ = 0;  // of the container for which the plans are
};

class plan_cache {
 public:
  // The plans for what the command lists; valid until `drop_if_full`.
  layout_plans& of(const ReportCommand& command);

  // Empties the cache if it exceeds the limits; call it between logs.
  void drop_if_full();

 private:
  layout_plans all_data_[2];  // with and without the system fields
  std::map<std::vector<std::string>, layout_plans> pulled_;
};

}  // namespace zanvik
