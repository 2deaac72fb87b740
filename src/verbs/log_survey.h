// What is said of the paths before they are read: how much there is, and whether the output would
// take the place of a log.
#pragma once

#include <cstdint>
#include <string>

#include "verbs/log_options.h"

namespace zanvik {

struct log_survey {
  std::uint64_t bytes = 0;
  std::string output_is_input;  // the log that the output would replace
};

log_survey survey_logs(const log_options& logs, const std::string& output);

}  // namespace zanvik
