// The plain way to match rules: each rule, each field, one after the other. Tests compare the
// compiled matcher with it.
#pragma once

#include <string_view>

#include "sigma/log_sources.h"

namespace zanvik::sigma {

// An event as the plain matcher needs it.
class event_fields {
 public:
  virtual ~event_fields() = default;
  // The values of the field that rules call `name`; of all fields if it is empty. Valid as long as
  // the event.
  virtual const field_values& values(std::string_view name) const = 0;
};

// Whether a detection matches an event that `source` stands for.
bool plain_match(const rule& detection, const event_source& source, const event_fields& event,
                 test_scratch& scratch);

}  // namespace zanvik::sigma
