// In place of case_export.cpp, in a program that is built without SQLite or OpenSSL.
#include "verbs/case_export.h"
#include "verbs/verbs.h"

namespace zanvik {

std::string case_support_problem() {
  return "--format sqlite: this program was built without SQLite and OpenSSL, which it needs";
}

int export_case(const log_options&, const case_options&) { return verb_bad_command; }

int merge_cases(const std::vector<std::string>& paths, const std::string&) {
  report_problem(paths.front(),
                 "is a database; this program was built without SQLite, which its merge needs");
  return verb_bad_command;
}

}  // namespace zanvik
