// The rules of a report: events go through a hunter, its matches into the collector.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "report/collector.h"

namespace zanvik {

struct report_rule_options {
  std::vector<std::string> rules;
  std::string min_level;
};

class report_rules {
 public:
  virtual ~report_rules() = default;
  virtual void start_log() = 0;
  // An event that the collector has been given.
  virtual void on_event(const event_view& event) = 0;
  // Adds what rules match together. Returns what was left out, in words; empty if nothing was.
  virtual std::string finish() = 0;
};

// Null, with `problem` set, if the rules cannot run. `collected` must outlive the result.
std::unique_ptr<report_rules> make_report_rules(const report_rule_options& options,
                                                report_collector& collected, std::string& problem);

}  // namespace zanvik
