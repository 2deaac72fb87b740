#include "run/run_reports.h"

#include <iostream>

namespace zanvik {

bool run_reports(evt_output_options& options) {
  if (options.results_stream == nullptr) options.results_stream = &std::cout;
  return false;
}

}  // namespace zanvik
