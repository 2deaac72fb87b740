// The columns of one table of records, found in a first pass over them.
//
// The records of a table have few shapes, so the field columns are computed from the distinct
// shapes; only for a padded table are the values' lengths read, from the heads of their cells.
// Names are views into the shapes, so a layout must not outlive the record container.
//
// An anomalous record, found in slack or otherwise damaged, often lacks the template with the names
// of its values. If it has as many fields as the first ordinary record, it gets the names of that
// one, position by position.
#pragma once

#include <cstddef>
#include <span>
#include <string_view>
#include <vector>

#include "events/log_record.h"
#include "options/output_format.h"
#include "output/tables/table_columns.h"
#include "output/tables/table_survey.h"
#include "output/write_context.h"

namespace zanvik {

// One name among the fields of a table's records.
struct field_column {
  std::string_view name;
  std::size_t width = 0;  // of the name or of the longest value that counts
  std::size_t records = 0;
  bool dropped = false;  // has no column
};

struct table_layout {
  std::vector<table_column> columns;  // all of the table
  std::size_t first_field = 0;        // index of the first field column
  std::vector<field_column> fields;   // in byte order of their names, at most `table_columns`
  bool has_description = false;
  bool has_provider = false;
  const record_shape* name_giver = nullptr;  // shape of the first ordinary record with a field

  // The shape that names the fields of this record, with the same number of columns.
  const record_shape& naming_shape(const LogRecord& record) const {
    const bool takes_names = is_anomalous(record) && name_giver &&
                             name_giver->columns.size() == record.shape->columns.size();
    return takes_names ? *name_giver : *record.shape;
  }
};

// The layout of a table of the records of a survey, of which there is at least one.
table_layout lay_out_table(const table_survey& found, const output_format& format,
                           const write_context& context);
// The same for these records.
table_layout lay_out_table(std::span<const LogRecord* const> records, const output_format& format,
                           const write_context& context);

}  // namespace zanvik
