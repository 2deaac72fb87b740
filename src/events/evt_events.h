// Events of a legacy .evt log: its records as Windows shows them, with the System members that they
// have, their strings as unnamed data and their bytes as Binary.
//
// In: records of walk_evt_log. Out: an event for each, with the same kind of shape as other events.
// Level, Task and Keywords are derived from the record's type and category, as Windows does it.
#pragma once

#include <map>
#include <memory>
#include <vector>

#include "events/event_shapes.h"
#include "events/event_view.h"
#include "evt/evt.h"

namespace zanvik {

class evt_event_reader : public evt_sink {
 public:
  explicit evt_event_reader(event_sink& sink) : sink_(sink) {}
  // The log of the next records; both must outlive their events.
  void set_source(const log_source& source) { source_ = &source; }
  // `base_offset` is that of the record's buffer in the log; memory ends at `readable_end`.
  void set_buffer(std::uint64_t base_offset, const std::byte* readable_end) {
    base_offset_ = base_offset;
    readable_end_ = readable_end;
  }

  // For all events from now on.
  void set_flags(std::uint32_t flags) { flags_ = flags; }

  void on_record(const evt_record& record) override;

 private:
  const event_template& template_for(std::size_t strings, bool data);

  // Values that the record's own bytes do not have in the form of events.
  struct made_values {
    std::uint16_t event_id;
    std::uint16_t qualifiers;
    std::uint8_t level;
    std::uint16_t task;
    std::uint64_t keywords;
    std::uint64_t time;
    std::uint32_t number;
  };

  event_sink& sink_;
  const log_source* source_ = nullptr;
  std::uint32_t flags_ = 0;
  std::uint64_t base_offset_ = 0;
  const std::byte* readable_end_ = nullptr;
  std::map<std::size_t, std::unique_ptr<event_template>> templates_;
  event_shapes shapes_;
  made_values made_{};
  std::vector<event_value> slots_;
  std::vector<std::uint64_t> kinds_;
  event_view view_;
};

}  // namespace zanvik
