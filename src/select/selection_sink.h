// What is done with the records that a log's commands select: they are kept for the tables,
// counted, or passed on. This is all that the selectors know about it.
#pragma once

#include <cstddef>

#include "evt/evt_record.h"
#include "evtx/record_fields.h"

namespace zanvik {

class selection_sink {
 public:
  virtual ~selection_sink() = default;

  // Takes a record that passed the tests of command number `command` of the selector's commands; it
  // and everything it points to are valid only during the call. Returns false if the command cannot
  // use the record after all, so that later commands are tried. A sink may replace the record's
  // values with texts; later commands see these.
  [[nodiscard]] virtual bool take(std::size_t command, record_fields& record) = 0;
  [[nodiscard]] virtual bool take(std::size_t command, const evt_record& record) = 0;
};

}  // namespace zanvik
