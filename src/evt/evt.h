// The way into this folder, which turns a whole legacy .evt log into decoded records.
//
//   evt.h          the walk over the file
//   evt_record.h   one record: its head, texts and SID
//
// The walk is a plain scan in file order. It follows none of the header's ring offsets, so records
// that were given up come out like live ones, and a log that has wrapped comes out with its newer
// records first: time order is the container's affair. A reader knows no report: each decoded
// record goes to a sink. Damage is silent.
#pragma once

#include <cstddef>
#include <span>

#include "evt/evt_record.h"

namespace zanvik {

class evt_sink {
 public:
  virtual ~evt_sink() = default;
  // Takes a record; it and all it points to are valid during the call only.
  virtual void on_record(const evt_record& record) = 0;
};

// Walks a log that stands in `log` as a whole. Returns false, with nothing handed on, when it does
// not begin as an .evt log does; no record at all is no failure.
bool walk_evt_log(std::span<const std::byte> log, evt_sink& sink);

}  // namespace zanvik
