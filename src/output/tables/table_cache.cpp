#include "output/tables/table_cache.h"

#include <utility>

#include "output/prefetch.h"
#include "output/tables/table_columns.h"

namespace zanvik {
table_plan make_table_plan(const table_survey& found, const output_format& format,
                           const write_context& context) {
  table_plan plan;
  plan.layout = lay_out_table(found, format, context);
  plan.header = table_header(plan.layout.columns, format);
  return plan;
}

namespace {

table_plan make_plan(std::span<const LogRecord* const> records, const output_format& format,
                     const write_context& context) {
  table_survey found(!format.no_whitespace);
  found.add(records);
  return make_table_plan(found, format, context);
}

}  // namespace

void table_cache::use_with(const record_container& records) {
  if (contents_id_ != records.contents_id()) plans_.clear();
  contents_id_ = records.contents_id();
}

bool table_cache::all_alike(std::span<const LogRecord* const> records) {
  const key wanted = key_of(*records.front());
  for (std::size_t i = 0; i < records.size(); ++i) {
    if (i + records_ahead < records.size()) {
      prefetch_bytes(records[i + records_ahead], sizeof(LogRecord));
    }
    if (is_anomalous(*records[i]) || key_of(*records[i]) != wanted) return false;
  }
  return true;
}

table_plan& table_cache::plan_for(std::span<const LogRecord* const> records,
                                  const output_format& format, const write_context& context) {
  // The widths of a padded table are those of its values.
  if (!format.no_whitespace || !all_alike(records)) {
    return own_plan_ = make_plan(records, format, context);
  }
  const key wanted = key_of(*records.front());
  const auto known = plans_.find(wanted);
  if (known != plans_.end()) return known->second;
  return plans_.emplace(wanted, make_plan(records.first(1), format, context)).first->second;
}

}  // namespace zanvik
