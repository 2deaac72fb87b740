// The second door: `zanvik VERB [OPTIONS] PATH...`. Each verb is in one file; this is the way into
// the folder.
//
// To add a verb, add its file and its row to the table in verbs.cpp.
#pragma once

#include <optional>
#include <span>
#include <string_view>

namespace zanvik {

// Statuses of a verb's run.
enum verb_status {
  verb_done = 0,
  verb_problems = 1,     // something could not be read or written
  verb_bad_command = 2,  // wrong options; nothing was done
  verb_matches = 3,      // of hunt: rules matched
  verb_findings = 4,     // all was read, and there are findings
  verb_stopped = 128,    // and the number of the signal that stopped the run
};

struct verb {
  std::string_view name;
  std::string_view what;              // one line
  int (*run)(int argc, char** argv);  // `argv` begins with the verb
};
std::span<const verb> verbs();

// Runs the verb that the first argument names and returns its status; nothing if it names none:
// then the arguments are the classic options.
std::optional<int> run_verb(int argc, char** argv);

int run_export(int argc, char** argv);
int run_report(int argc, char** argv);
int run_shard(int argc, char** argv);
int run_merge(int argc, char** argv);
#ifdef ZANVIK_SIGMA
int run_hunt(int argc, char** argv);
#endif
#ifdef ZANVIK_INSPECT
int run_check(int argc, char** argv);
#endif

}  // namespace zanvik
