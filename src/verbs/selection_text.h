// The options that say which events are taken, as one text: the same text for the same selection.
#pragma once

#include <string>

#include "verbs/log_options.h"

namespace zanvik {

// "--event-id 4624-4625 --slack"; empty when all events of a log are taken.
std::string selection_text(const log_options& options);

}  // namespace zanvik
