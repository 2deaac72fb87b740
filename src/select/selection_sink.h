// What becomes of the records that a log's commands select: they are kept for the tables, counted,
// handed on whole. The selectors know no more of it than this.
#pragma once

#include <cstddef>

#include "evt/evt_record.h"
#include "evtx/record_fields.h"

namespace zanvik {

class selection_sink {
 public:
  virtual ~selection_sink() = default;

  // Takes a record that passed the tests of command number `command` of the selector's commands;
  // it and all it points to are valid during the call only. False when the command has no use for
  // the record after all, so that the commands behind it are tried. A sink may put texts in the
  // place of the record's values; the commands behind it see these.
  [[nodiscard]] virtual bool take(std::size_t command, record_fields& record) = 0;
  [[nodiscard]] virtual bool take(std::size_t command, const evt_record& record) = 0;
};

}  // namespace zanvik
