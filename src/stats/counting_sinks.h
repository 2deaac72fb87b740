// Statistics as sinks: one counts every record that is read before it goes on to the selector, and
// one counts combinations of fields among the kept records.
#pragma once

#include <string>
#include <utility>

#include "commands/report_command.h"
#include "evt/evt.h"
#include "evtx/evtx.h"
#include "select/selection_sink.h"
#include "stats/log_statistics.h"

namespace zanvik {

// The statistics and the next sinks must outlive it. At its first .evtx record the log gets the
// type `channel`, unless it has one.
class record_counter : public record_sink, public evt_sink {
 public:
  record_counter(LogStatistics& statistics, std::string channel, record_sink& next,
                 evt_sink& next_evt)
      : statistics_(statistics), channel_(std::move(channel)), next_(next), next_evt_(next_evt) {}

  void on_record(record_fields& record) override {
    if (statistics_.log_type.empty()) statistics_.log_type = channel_;
    count_record(statistics_, record.event_id, record.time);
    next_.on_record(record);
  }
  void on_record(const evt_record& record) override {
    count_record(statistics_, record.short_event_id(), record.time);
    next_evt_.on_record(record);
  }

 private:
  LogStatistics& statistics_;
  std::string channel_;
  record_sink& next_;
  evt_sink& next_evt_;
};

// Goes before the sink that keeps records in `records`. Everything it is made from must outlive it.
class combination_counter : public selection_sink {
 public:
  combination_counter(LogStatistics& statistics, command_refs commands,
                      const record_container& records, selection_sink& keeping)
      : statistics_(statistics),
        commands_(std::move(commands)),
        records_(records),
        keeping_(keeping) {}

  bool take(std::size_t command, record_fields& record) override {
    return keeping_.take(command, record) && count(command);
  }
  bool take(std::size_t command, const evt_record& record) override {
    return keeping_.take(command, record) && count(command);
  }

 private:
  bool count(std::size_t command) {
    if (commands_[command].emit) {
      count_hist_from(statistics_, commands_, command, records_.last());
    }
    return true;
  }

  LogStatistics& statistics_;
  command_refs commands_;
  const record_container& records_;
  selection_sink& keeping_;
};

}  // namespace zanvik
