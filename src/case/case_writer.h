// Events of a log into its case. One sink serves all logs of a run.
#pragma once

#include <string>

#include "case/case_rows.h"
#include "case/event_data.h"
#include "events/event_view.h"
#include "inspect/log_ledger.h"

namespace zanvik {

// The row of a log, from its ledger.
log_row row_of(const log_ledger& ledger);

class case_writer : public event_sink {
 public:
  explicit case_writer(case_rows& rows) : rows_(rows) {}

  // Adds the findings of the log that `rows` has begun. False on failure, as `rows` says.
  [[nodiscard]] bool add_findings(const log_ledger& ledger);
  void on_event(const event_view& event) override;

 private:
  void bind_times(std::uint64_t filetime);
  void bind_system(const event_view& event);
  void bind_number(event_column column, const event_view& event, system_member member);
  void bind_shared(event_column column, const event_view& event, system_member member);

  case_rows& rows_;
  event_data data_;
  std::string scratch_;
  char time_[40];
};

}  // namespace zanvik
