// The column plans of a run, so that what a command lists of the records of a layout is worked out
// once for all logs. Commands that list the same share their plans.
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <unordered_map>
#include <vector>

#include "reports/column_plan.h"
#include "reports/report_command.h"

namespace zanvik {

class plan_cache {
 public:
  struct plans {
    std::unordered_map<std::uint64_t, column_plan> by_layout;  // by layout id
    std::uint64_t generation = 0;  // of the record container that they refer to
  };

  // The plans for what the command lists; valid until `drop_if_full`.
  plans& of(const ReportCommand& command);

  // Starts anew when more is held than the limits allow; call it between logs.
  void drop_if_full();

 private:
  plans all_data_[2];  // with and without the system fields
  std::map<std::vector<std::string>, plans> pulled_;
};

}  // namespace zanvik
