// One timeline of the records of all logs of a run, in one order of time.
//
// In: records of one log after the other, in any order. Out: the form's header, then the lines that
// `write_timeline` makes of them. Lines that show the same time are in the order of their logs, and
// those of one log by their full time, equal ones as they came in: as in the log's own timeline.
#pragma once

#include <functional>
#include <span>
#include <string>
#include <string_view>

#include "events/log_record.h"
#include "options/output_format.h"
#include "output/write_context.h"
#include "pipeline/external_sorter.h"

namespace zanvik {

class one_timeline {
 public:
  // `format` must outlive this. `by_time` false: one log's timeline after the other's.
  one_timeline(const output_format& format, const sort_settings& settings, bool by_time = true)
      : format_(format), sorter_(settings), by_time_(by_time) {}

  void start_log() { ++log_; }
  // After an error the records are not taken.
  void add(std::span<const LogRecord* const> records, const write_context& context);
  // Whether there was a record, with a line or without.
  bool any() const { return any_; }
  // Hands out the lines. False when they could not be sorted, and `error` says why, or when `write`
  // ended the work.
  [[nodiscard]] bool finish(const std::function<bool(std::string_view)>& write);
  const std::string& error() const { return sorter_.error(); }

 private:
  const output_format& format_;
  external_sorter sorter_;
  bool by_time_;
  bool any_ = false;
  std::uint64_t log_ = 0;
};

}  // namespace zanvik
