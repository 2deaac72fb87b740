// The data of an event as one JSON object: each datum and each value below UserData, by its name.
//
//   {"TargetUserName":"anna.berg","LogonType":3}
//
// Values have their types, as in JSON lines. Data without names are in one array, "Data"; the
// second of a name gets _1. What is under System is not in it.
#pragma once

#include <string>
#include <string_view>

#include "events/event_view.h"
#include "export/form_program.h"
#include "export/output_buffer.h"

namespace zanvik {

class event_data {
 public:
  event_data() : out_(text_) {}

  // The event's data, valid until the next call. `lossy` is set if a text could not be held as it
  // is.
  std::string_view of(const event_view& event, bool& lossy);

 private:
  form_programs programs_;
  std::string text_;
  output_buffer out_;
};

}  // namespace zanvik
