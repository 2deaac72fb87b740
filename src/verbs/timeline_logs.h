// Logs as lines of the classic timelines, for `export`: the forms `l2t` and `bodyfile`.
//
// A log is read as the classic door reads it, by the same readers and writers, so that its lines
// are those of `-csvl2t` and `-bodyfile`. Conditions on whole events are looked at by the reader of
// whole events, which goes over each block first.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <string_view>

#include "events/log_record.h"
#include "evtx/channel_finder.h"
#include "export/output_buffer.h"
#include "keep/plan_cache.h"
#include "output/timelines/one_timeline.h"
#include "run/evt_output_options.h"
#include "run/log_list.h"
#include "select/event_conditions.h"
#include "select/selection_sink.h"
#include "source/log_events.h"
#include "verbs/order_options.h"

namespace zanvik {

struct timeline_options {
  bool slack = false;
  bool event_time = false;  // the event's own time, not the header's
};

// Whether export makes the form here: "l2t", "bodyfile".
bool is_timeline_form(std::string_view form);

class timeline_logs {
 public:
  // `conditions` must outlive this.
  timeline_logs(std::string_view form, const event_conditions& conditions,
                const timeline_options& options, const order_options& order);
  ~timeline_logs();

  // Takes the lines of the log. Returns what could not be read.
  [[nodiscard]] log_losses read(const found_log& log,
                                const std::function<void(std::uint64_t)>& progress);
  // Writes header and lines. False, with `error` set, when they could not be sorted.
  [[nodiscard]] bool finish(output_buffer& out);
  const std::string& error() const { return lines_.error(); }

 private:
  class wanted_events;
  class wanted_records;
  class record_pair;

  void classify(const found_log& log, std::span<const std::byte> block, std::uint64_t offset,
                LogEntry& entry);
  void hand_on(const LogEntry& entry);
  log_losses read_evtx(const found_log& log, LogEntry& entry, selection_sink& wanted,
                       const command_refs& commands,
                       const std::function<void(std::uint64_t)>& progress);
  log_losses read_evt(const found_log& log, LogEntry& entry, selection_sink& wanted,
                      const command_refs& commands,
                      const std::function<void(std::uint64_t)>& progress);

  evt_output_options options_;
  bool by_time_;
  one_timeline lines_;
  record_reader reader_;
  record_container records_;
  plan_cache plans_;
  channel_finder channels_;
  std::unique_ptr<wanted_events> wanted_;  // null when all are
};

}  // namespace zanvik
