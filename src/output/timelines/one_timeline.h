// One timeline of the records of all logs of a run, in one order of time.
//
// In: records of one log after the other, in any order. Out: the form's header, then the lines that
// `write_timeline` makes of them. Lines that show the same time are in the order of their logs, and
// those of one log by their full time, equal ones as they came in: as in the log's own timeline.
#pragma once

#include <cstdint>
#include <functional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "events/log_record.h"
#include "options/output_format.h"
#include "output/write_context.h"
#include "pipeline/external_sorter.h"

namespace zanvik {

// What takes the records of all logs.
class timeline_sink {
 public:
  virtual ~timeline_sink() = default;
  // The records that follow are of the next log.
  virtual void start_log() = 0;
  virtual void add(std::span<const LogRecord* const> records, const write_context& context) = 0;
};

// Lines that wait to be added, made on any thread.
class timeline_part {
 public:
  void start_log() { lines_.push_back({0, starts_log}); }
  void add(std::span<const LogRecord* const> records, const output_format& format,
           const write_context& context);
  void clear();
  // What it holds.
  std::uint64_t bytes() const { return text_.size() + lines_.size() * sizeof(line); }

 private:
  friend class one_timeline;
  static constexpr std::size_t starts_log = ~std::size_t{0};
  struct line {
    std::uint64_t filetime = 0;
    std::size_t size = 0;  // in bytes; or starts_log
  };
  std::vector<line> lines_;
  std::string text_;
  bool any_ = false;  // a record, with a line or without
};

class one_timeline : public timeline_sink {
 public:
  // `format` must outlive this. `by_time` false: one log's timeline after the other's.
  one_timeline(const output_format& format, const sort_settings& settings, bool by_time = true)
      : format_(format), sorter_(settings), by_time_(by_time) {}

  void start_log() override { ++log_; }
  // After an error the records are not taken.
  void add(std::span<const LogRecord* const> records, const write_context& context) override;
  void add(const timeline_part& lines);
  // Whether there was a record, with a line or without.
  bool any() const { return any_; }
  // Hands out the lines. False when they could not be sorted, and `error` says why, or when `write`
  // ended the work.
  [[nodiscard]] bool finish(const std::function<bool(std::string_view)>& write);
  const std::string& error() const { return sorter_.error(); }

 private:
  void add_line(std::uint64_t filetime, std::string_view line);

  const output_format& format_;
  external_sorter sorter_;
  bool by_time_;
  bool any_ = false;
  std::uint64_t log_ = 0;
};

}  // namespace zanvik
