#include "verbs/verbs.h"

#include <csignal>

namespace zanvik {

std::span<const verb> verbs() {
  static constexpr verb all[] = {
      {"export", "whole events, in forms that other tools read", run_export},
#ifdef ZANVIK_SIGMA
      {"hunt", "events that Sigma rules match", run_hunt},
#endif
#ifdef ZANVIK_INSPECT
      {"check", "what is missing from logs, and what was changed", run_check},
#endif
      {"report", "one HTML page that shows what happened", run_report},
      {"shard", "lists of logs of about equal size, for several runs or machines", run_shard},
      {"merge", "results of such runs as one, in order of time", run_merge},
  };
  return all;
}

std::optional<int> run_verb(int argc, char** argv) {
  if (argc < 2) return std::nullopt;
  for (const verb& known : verbs()) {
    if (known.name != argv[1]) continue;
    // A file that grows past a limit is an error of its own, as on a full disk.
    std::signal(SIGXFSZ, SIG_IGN);
    return known.run(argc - 1, argv + 1);
  }
  return std::nullopt;
}

}  // namespace zanvik
