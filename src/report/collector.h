// Gathers what a report shows from events, in one pass and in bounded memory.
//
//   report_collector collected;
//   for each log: collected.start_log(); read it with `collected` as its sink
//   collected.finish();
//
// All texts that come out are visible texts (page_text.h), ready to be escaped.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "events/event_view.h"
#include "questions/question_reader.h"
#include "report/activity.h"
#include "report/row_store.h"
#include "report/script_blocks.h"

namespace zanvik {

struct report_column {
  std::string_view name, label;
};
struct report_table {
  std::string_view name, title, group;
  std::vector<report_column> columns;
  bool lists_all_kinds = false;  // the column `what` says more than the title
};

// The columns that all tables begin with: computer, what happened, how the record was found.
enum given_column : std::size_t { host_column, what_column, mark_column, given_columns };

// A rule that an event matches.
struct matched_rule {
  std::string_view level, title, tags, id;
};

class report_collector : public event_sink {
 public:
  report_collector();

  // The following events are of the next log.
  void start_log() {
    ++logs_;
    log_events_ = {};
  }
  void on_event(const event_view& event) override;
  // Adds a match of the event that was given last, or of one like it.
  void add_match(const event_view& event, const matched_rule& rule);
  // A match without an event of its own, at this time.
  void add_match(std::uint64_t filetime, std::uint32_t log, const matched_rule& rule,
                 std::string_view details);
  void finish();

  // The events of the log in hand.
  struct log_count {
    std::uint64_t events = 0, first = 0, last = 0;
  };
  const log_count& log_events() const { return log_events_; }

  // The tables, in the order of row_store's; the last one is of matches.
  const std::vector<report_table>& tables() const { return tables_; }
  const row_store& rows() const { return rows_; }
  const activity& counts() const { return counts_; }
  std::uint64_t scripts_left_out() const { return scripts_.left_out(); }

 private:
  void add_row(const event_view& event, const question_match& match, const row_place& place);
  void add_script(const event_view& event, const question_match& match, const row_place& place);
  void add_scripts();
  row_place place_of(const event_view& event) const;
  std::string_view host_of(const event_view& event);

  question_reader reader_;
  std::vector<report_table> tables_;
  row_store rows_;
  script_blocks scripts_;
  activity counts_;
  std::vector<std::uint32_t> groups_;  // by question
  std::uint32_t logs_ = 0;
  log_count log_events_;
  std::uint64_t sequence_ = 0;
  std::string computer_, host_;  // of the last event: as it is there, and as it is shown
  std::uint32_t host_number_ = 0;
  std::vector<std::string> cells_;
  std::vector<std::string_view> views_;
  std::string scratch_;
};

}  // namespace zanvik
