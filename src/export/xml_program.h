// The XML of an event as a program, for the forms that hold it.
#pragma once

#include "export/form_program.h"

namespace zanvik {

// Adds what writes the event's elements to `out`.
void build_event_xml(const event_view& event, form_program& out);

}  // namespace zanvik
