// What a thread of `hunt` does: finds matches in a part of a log, and keeps what the run needs of
// them until the part's turn comes.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "sigma/rule_matches.h"
#include "verbs/hunt_output.h"
#include "verbs/log_jobs.h"
#include "verbs/log_options.h"

namespace zanvik {

// What the workers of a run share. All must outlive them.
struct hunt_work {
  const log_options& logs;
  const sigma::rule_set& set;
  sigma::compiled_rules& rules;
  const match_form* form = nullptr;  // null: matches are only counted
  // Changed when results are passed on.
  sigma::rule_matches& matches;
  sigma::correlator& correlator;
  sigma::hunt_counts& counts;
  match_output* lines = nullptr;
};

std::unique_ptr<log_worker> make_hunt_worker(hunt_work& work);

}  // namespace zanvik
