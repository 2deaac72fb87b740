// Verbs on cases: `export --format sqlite` and `merge`. A program without SQLite has
// no_case_export.cpp in their place.
#pragma once

#include <string>
#include <vector>

#include "verbs/log_options.h"

namespace zanvik {

struct case_options {
  std::string output;
  std::string temporary_folder;  // empty for TMPDIR
  bool full_text = false;
};

// Why this program cannot make a case; empty when it can.
std::string case_support_problem();

// Adds the logs to the case, which is made if it is not there. Returns the status of the run.
int export_case(const log_options& logs, const case_options& options);

// Makes one case of many, or adds them to one. Returns the status of the run.
int merge_cases(const std::vector<std::string>& paths, const std::string& output);

}  // namespace zanvik
