// What verbs that read logs have in common: the paths, which events to take, and the messages about
// what could not be read.
#pragma once

#include <string>
#include <vector>

#include "select/event_conditions.h"
#include "source/log_finder.h"

namespace CLI {
class App;
}

namespace zanvik {

// --carve and --carve=unallocated.
class carve_option {
 public:
  // Must outlive the parsing.
  void add_to(CLI::App& app);
  carve_what what() const;

 private:
  std::string text_;
};

// The paths that a verb is given, on its command line or in lists.
struct path_options {
  std::vector<std::string> paths;
  std::vector<std::string> lists;       // files of paths, not yet read
  std::vector<std::string> read_files;  // those that have been
  bool needed = true;  // one of the two has to be there

  // Adds what the lists hold to `paths`. Returns why that cannot be, or nothing.
  [[nodiscard]] std::string read_lists();
};

// Adds PATH and --from-list; the lists are read when the command line has been parsed.
void add_path_options(CLI::App& app, path_options& options, const char* what);

struct log_options : path_options {
  bool quiet = false;
  bool slack = false;
  carve_option carve;
  event_conditions conditions;
};

// Adds the options to a verb's command line; `options` is filled when that is parsed.
void add_log_options(CLI::App& app, log_options& options);

// Parses a verb's command line. Returns 0 or, with what there is to say said, the status that ends
// the run: `done` is set then.
int parse_verb(CLI::App& app, int argc, char** argv, bool& done);

// What is wrong with the name of a file to write, for CLI::Option::check; empty for nothing.
std::string output_name_problem(const std::string& name);

// One line on standard error.
void report_problem(const std::string& path, const std::string& what);

}  // namespace zanvik
