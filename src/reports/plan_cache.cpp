#include "reports/plan_cache.h"

#include "support/limits.h"

namespace zanvik {

plan_cache::plans& plan_cache::of(const ReportCommand& command) {
  return command.all_data ? all_data_[command.skip_system_fields] : pulled_[command.pull];
}

void plan_cache::drop_if_full() {
  std::size_t held = all_data_[0].by_layout.size() + all_data_[1].by_layout.size();
  for (const auto& [names, pulled] : pulled_) held += 1 + pulled.by_layout.size();
  if (held <= limits::cached_layouts) return;
  for (plans& each : all_data_) each.by_layout.clear();
  pulled_.clear();
}

}  // namespace zanvik
