// What the tables of a run share. The columns, the header line and the row plans of a table whose
// records are all alike depend on their shape and not on their values, so logs with the same kinds
// of records share them. All tables of one cache have the same format and context.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <unordered_map>
#include <vector>

#include "base/hash_mix.h"
#include "events/log_record.h"
#include "options/output_format.h"
#include "output/tables/row_plan.h"
#include "output/tables/table_layout.h"
#include "output/write_context.h"

namespace zanvik {

// What is computed before a table's rows are written, or with the first row of a shape.
struct table_plan {
  table_layout layout;
  std::string header;  // its line
  row_plans rows;
};

// The plan for a table of the records of a survey, without any row.
table_plan make_table_plan(const table_survey& found, const output_format& format,
                           const write_context& context);

class table_cache {
 public:
  // Forgets the plans of shapes that are gone; call it before the tables of a container.
  void use_with(const record_container& records);

  // The plan for a table of these records, of which there is at least one; valid until the next
  // call.
  table_plan& plan_for(std::span<const LogRecord* const> records, const output_format& format,
                       const write_context& context);

 private:
  struct key {
    std::uint64_t shape_id = 0;
    bool is_evtx = false;
    bool has_description = false;

    bool operator==(const key&) const = default;
  };
  struct key_hash {
    std::size_t operator()(const key& of) const {
      return static_cast<std::size_t>(
          keyed_hash(of.shape_id, of.is_evtx * 2u + of.has_description));
    }
  };
  static bool all_alike(std::span<const LogRecord* const> records);
  static key key_of(const LogRecord& record) {
    return {record.shape->id, record.is_evtx, !record.description->empty()};
  }

  std::unordered_map<key, table_plan, key_hash> plans_;
  std::uint64_t contents_id_ = 0;  // of the container
  table_plan own_plan_;            // of a table that is unlike any other
};

}  // namespace zanvik
