// The XML of an event as a program, for the forms that contain it.
#pragma once

#include "export/form_program.h"

namespace zanvik {

// Adds the steps that write the event's elements to `out`.
void build_event_xml(const event_view& event, form_program& out);

}  // namespace zanvik
