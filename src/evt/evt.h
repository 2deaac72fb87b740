// The way into this folder, which turns a whole legacy .evt log into decoded records.
//
//   evt.h          the walk over the file
//   part_walk.h    the same for a log that comes in parts
//   evt_record.h   one record: its head, texts and SID
//
// The walk is a plain scan in file order. It follows none of the header's ring offsets, so
// overwritten records that are still in the file come out like live ones, and a log that has
// wrapped gives its newer records first; the container sorts by time. A reader knows no report:
// each decoded record goes to a sink. Damage is silent.
#pragma once

#include <cstddef>
#include <span>

#include "evt/evt_record.h"

namespace zanvik {

class evt_sink {
 public:
  virtual ~evt_sink() = default;
  // Takes a record; it and everything it points to are valid only during the call.
  virtual void on_record(const evt_record& record) = 0;
};

// Walks the whole log in `log`. Returns false, without a record, if it does not begin like an .evt
// log; a log without records is not a failure.
bool walk_evt_log(std::span<const std::byte> log, evt_sink& sink);

}  // namespace zanvik
