// The rows of a case, added log by log: all of a log in one transaction, so that a log is whole in
// the case or not in it.
//
//   if (rows.find(log).id == 0 && rows.begin(log)) {
//     // for each event: bind the columns, rows.add_event()
//     rows.commit();
//   }
//
// After a failure the transaction is undone, nothing more is written and `error` says why.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "case/case_file.h"
#include "case/lookup_table.h"

namespace zanvik {

struct log_row {
  std::string path;
  std::string kind;    // "evtx", "evt", "carved"
  std::string sha256;  // empty when it is not known
  std::uint64_t size = 0;
  std::string first_time, last_time;  // empty when there are none
  std::uint64_t findings = 0;
  std::string selection;  // what was taken of it; empty for all events
  std::string reader;     // "zanvik 0.65"
};

struct finding_row {
  std::string_view kind;
  std::string_view weight;
  std::uint64_t offset = 0;
  const std::uint64_t* chunk = nullptr;  // null when there is none
  const std::uint64_t* record = nullptr;
  std::string_view detail;
};

// The columns of `event` in their order, as parameters.
enum class event_column : int {
  log = 1,
  offset,
  record,
  time,
  time_us,
  channel,
  provider,
  event_id,
  version,
  level,
  task,
  opcode,
  keywords,
  process_id,
  thread_id,
  activity_id,
  computer,
  user_sid,
  data,
  flags,
};

// A log that is in the case.
struct kept_log {
  std::int64_t id = 0;  // 0: it is not
  std::string path;
  std::string selection;
};

class case_rows {
 public:
  // `file` is open, and outlives this.
  explicit case_rows(case_file& file);

  // The log with the same bytes; without a sum, that with the same path and size.
  kept_log find(const log_row& log);

  // These return false on failure.
  [[nodiscard]] bool begin(const log_row& log);
  [[nodiscard]] bool add_finding(const finding_row& found);
  // The same from another case: the columns of `row` from `first` on, which have been looked at.
  [[nodiscard]] bool add_finding_from(const statement& row, int first);
  // Adds what is bound; every column must be.
  [[nodiscard]] bool add_event();
  [[nodiscard]] bool commit();

  // Texts must live until `add_event`.
  void bind(event_column column, std::int64_t number) { event_.bind(int(column), number); }
  void bind(event_column column, std::string_view text) { event_.bind(int(column), text); }
  void bind_null(event_column column) { event_.bind_null(int(column)); }
  // A number of 64 bits, see case_schema.h.
  void bind_number(event_column column, std::uint64_t number) {
    bind_number(event_, int(column), number);
  }
  // The id of a text: of channel, provider, computer or user_sid.
  void bind_shared(event_column column, std::string_view text);
  // A text of anybody's.
  void bind_copy(event_column column, std::string_view text);

  // Undoes the log in hand, for a reason of the caller's.
  void abandon(const std::string& why);
  // The same, and the next log can begin.
  void leave_out();

  bool failed() const { return !error_.empty(); }
  const std::string& error() const { return error_; }

 private:
  static void bind_number(statement& to, int parameter, std::uint64_t number);
  bool fail();
  void undo();
  lookup_table& table_of(event_column column);

  case_file& file_;
  database& base_;
  statement event_, finding_;
  lookup_table channels_, providers_, computers_, sids_;
  std::int64_t log_ = 0;
  std::int64_t events_ = 0;
  std::int64_t first_event_ = 0;
  std::string error_;
  std::string scratch_;
};

}  // namespace zanvik
