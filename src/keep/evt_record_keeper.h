// Fills `LogRecord`s from legacy .evt records and adds them to the run's container. Records with
// the same columns, which depend on the number of strings and the SID, share their shape.
#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "commands/report_command.h"
#include "events/log_record.h"
#include "keep/evt_columns.h"

namespace zanvik {

// Keeps the records of one command. The command and the container must outlive it.
class evt_record_keeper {
 public:
  evt_record_keeper(const ReportCommand& command, record_container& records)
      : command_(command), records_(records) {}

  // Adds the record, which the command has selected.
  void keep(const evt_record& record);

 private:
  // Columns in the order of their names, and the sources of their values.
  struct column_plan {
    const record_shape* shape = nullptr;    // of the container
    std::vector<evt_value_source> sources;  // one for each column that is not a literal
  };

  void start_contents();
  const column_plan& plan_for(const evt_record& record);
  column_plan make_plan(std::vector<evt_column> columns);
  void apply_labels(std::vector<evt_column>& columns) const;
  const char* write_block(const evt_record& record, const column_plan& plan);

  const ReportCommand& command_;
  record_container& records_;
  std::uint64_t contents_id_ = 0;  // of the container for which the following is valid
  const std::string* description_ = nullptr;
  column_plan named_plan_;  // of a command that does not ask for all data
  // By twice the count of strings, and 1 more for a SID.
  std::vector<std::unique_ptr<column_plan>> plans_;
  std::size_t plan_columns_ = 0;
};

}  // namespace zanvik
