// The command line of hunt.
#pragma once

#include <string>
#include <vector>

#include "export/event_form.h"
#include "sigma/rule_set.h"
#include "verbs/log_options.h"
#include "verbs/order_options.h"

namespace zanvik {

struct hunt_options {
  log_options logs;
  std::vector<std::string> rules, placeholders;
  std::string log_sources, min_level, format, output;
  order_options order;
  sigma::rule_choice choice;
  form_options form;
  unsigned threads = 0;
  bool list = false, stats = false, details = false;
};

// Returns 0 or, with what there is to say said, the status that ends the run: `done` is set then.
int read_hunt_options(int argc, char** argv, hunt_options& options, bool& done);

}  // namespace zanvik
