// Fills `LogRecord`s from decoded .evtx records and adds them to the run's container: the values of
// a record are rendered once, directly into the container's memory, in the order of its columns.
#pragma once

#include <cstdint>
#include <deque>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

#include "commands/report_command.h"
#include "disk/translated_slots.h"
#include "evtx/values/value_text.h"
#include "keep/plan_cache.h"
#include "keep/slot_columns.h"

namespace zanvik {

// Keeps the records of one command. The command, the container and the plans must outlive it.
class record_keeper {
 public:
  record_keeper(const ReportCommand& command, record_container& records, plan_cache& plans)
      : command_(command), records_(records), plans_(plans.of(command)) {
    if (!command.translators.empty()) translator_.emplace(command.translators);
  }

  // Gives the record, which passed the command's tests, the texts that the command's translators
  // make. Returns whether there are any.
  bool translate(record_fields& record) { return translator_ && translator_->translate(record); }

  // Adds the record, which passed the command's tests. Returns false, with nothing added, if it has
  // none of the fields that the command pulls.
  bool keep(const record_fields& record);

 private:
  const column_plan& plan_for(const record_fields& record);
  column_plan make_plan(const record_fields& record, record_container& records) const;
  const column_plan& bare_plan_for(const record_fields& record);
  bool fill(const record_fields& record, LogRecord& kept);
  void fill_plain(const record_fields& record, LogRecord& kept);
  void add_plain_column(const layout_field& field, bool as_it_is);
  bool fill_plain_pulled(const record_fields& record, LogRecord& kept);
  const char* write_block(const record_fields& record, const column_plan& plan, LogRecord& kept);
  const std::string* provider_of(const record_fields& record, const column_plan& plan);
  LogRecord head_of(const record_fields& record);
  void add_slack_columns(const record_fields& record, LogRecord& kept);
  static std::uint64_t event_id_of(const record_fields& record);

  const ReportCommand& command_;
  record_container& records_;
  std::optional<slot_translator> translator_;
  std::uint64_t contents_id_ = 0;  // of the container for which the following is valid
  const std::string* description_ = nullptr;
  const std::string* last_provider_ = nullptr;
  layout_plans& plans_;
  column_plan own_plan_;                                       // of one record
  std::unordered_map<std::uint64_t, column_plan> bare_plans_;  // by layout
  record_container plain_records_;                             // for plans that are not kept
  std::vector<std::pair<std::string_view, const layout_field*>> plain_columns_;  // of one record
  std::deque<std::string> printable_names_;  // those of its names that were changed
  std::vector<std::string_view> names_;
  value_writer writer_;
  slot_columns slot_columns_;
  std::string scratch_;
};

}  // namespace zanvik
