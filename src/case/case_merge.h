// A case whose logs are added to another one.
//
//   case_source source;
//   source.open(path)                 // refuses what is no case, or a damaged one
//   while (source.next_log()) { if (wanted) source.add_to(rows) }
//
// Somebody may have prepared it. It is opened for reading; its tables must be exactly those of a
// case and sound; its triggers, views and functions are never run; each value is looked at before
// it is taken. A log that is not as zanvik writes it is left out whole.
#pragma once

#include <cstdint>
#include <string>

#include "case/case_rows.h"
#include "case/database.h"

namespace zanvik {

class case_source {
 public:
  // Returns what is wrong, or nothing.
  [[nodiscard]] std::string open(const std::string& path);
  bool has_full_text() const { return full_text_; }
  std::uint64_t log_bytes() const { return log_bytes_; }  // of all its logs

  // The next log, from the first. False at the end, or with an error.
  [[nodiscard]] bool next_log();
  const log_row& log() const { return log_; }
  // Adds that log. False when it was left out, with the reason in `error`, or when `rows` failed.
  [[nodiscard]] bool add_to(case_rows& rows);
  const std::string& error() const { return error_; }

 private:
  std::string check_tables();
  bool read_log();
  bool next_finding();
  bool next_event();
  bool add_findings(case_rows& rows);
  bool add_events(case_rows& rows);
  bool bind_event(case_rows& rows);
  bool bind_column(case_rows& rows, event_column column, int at);
  bool fail(const std::string& why);

  // A cursor over the rows of a table, in the order of their ids.
  struct cursor {
    statement rows;
    std::int64_t id = 0;   // of the row in hand
    std::int64_t log = 0;  // that it belongs to
    bool at_row = false;
  };
  bool advance(cursor& table, const char* name);

  database base_;
  bool full_text_ = false;
  std::uint64_t log_bytes_ = 0;
  cursor logs_, findings_, events_;
  log_row log_;
  std::int64_t event_count_ = 0;  // that the log's row declares
  std::string error_;
};

}  // namespace zanvik
