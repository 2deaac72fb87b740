#include "verbs/log_survey.h"

#include <filesystem>
#include <system_error>

#include "source/log_events.h"
#include "verbs/output_target.h"

namespace zanvik {

log_survey survey_logs(const log_options& logs, const std::string& output) {
  log_survey seen;
  log_finder finder(
      [&](found_log& log) {
        seen.bytes += log.size;
        if (is_same_file(output, log.source)) seen.output_is_input = log.source.path;
      },
      [](const std::string&, const std::string&) {});
  finder.carve(logs.carve.what());
  for (const std::string& path : logs.paths) {
    if (path == "-") {
      log_source input;
      identify_standard_input(input);
      if (is_same_file(output, input)) seen.output_is_input = path;
    } else {
      finder.find(path);
    }
  }
  for (const std::string& list : logs.read_files) {
    std::error_code ignored;
    if (std::filesystem::equivalent(list, output, ignored)) seen.output_is_input = list;
  }
  return seen;
}

}  // namespace zanvik
