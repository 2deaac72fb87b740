// What all command-line runs share: the options that are not about logs, and the pass that reads
// them. A program's options derive from this.
#pragma once

#include <initializer_list>
#include <string>
#include <string_view>

#include "base/diag.h"
#include "options/argument_list.h"
#include "options/output_format.h"
#include "options/strict_notes.h"
#include "options/walk_options.h"

namespace zanvik {

class cmd_params {
 public:
  cmd_params() = default;
  cmd_params(const cmd_params&) = delete;
  cmd_params& operator=(const cmd_params&) = delete;
  virtual ~cmd_params() = default;

  // Takes the shared options out of `argv_list`, each by its name and in a fixed order, so that
  // their order in the list does not matter; other words are not an error. Returns false if the run
  // must not continue; its message has then been printed.
  [[nodiscard]] bool parse_options(argument_list& argv_list);

  std::string command_line;  // the arguments as given
  std::string program_name;  // without folder and extension
  std::string version;
  std::string title;
  std::string out_file;  // results path; empty is standard output
  std::string username;  // user column of timeline rows
  std::string hostname;
  std::string signal_name;
  bool show_status = true;
  bool profile = false;  // print the run time at the end
  unsigned threads = 0;  // of the run; 0 if the processors decide
  output_format format;
  walk_options walk;
  diag_trace trace;
  strict_notes strict;

 private:
  [[nodiscard]] bool take_results_file(argument_list& argv_list);
  void take_trace_options(argument_list& argv_list);
  void take_threads_option(argument_list& argv_list);
  void drop_values(std::initializer_list<std::string_view> names, argument_list& argv_list);
  void drop_flags(std::initializer_list<std::string_view> names, argument_list& argv_list);
  [[nodiscard]] bool take_checked_file_times(argument_list& argv_list);
  void take_checked_text_options(argument_list& argv_list);
};

}  // namespace zanvik
