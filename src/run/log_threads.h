// The logs of a run on several threads. A log, or a few small ones, are a job
// (pipeline/ordered_work.h): a part of the run that belongs to a thread reads them, and what they
// give waits for its turn: results, lines of a timeline, messages, statistics. So a run gives the
// same with any number of threads.
//
// A log that is large, or the only one, is not given to one thread: when the logs before it are done,
// the run itself reads it, on the thread of the caller.
#pragma once

#include <atomic>
#include <cstddef>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "pipeline/ordered_work.h"
#include "run/log_run.h"

namespace zanvik {

class log_threads {
 public:
  // Reads a log, with the run or a part of it; returns whether it gave results.
  using task = std::function<bool(log_run&)>;

  // Enters itself in `run`, unless there is only one thread. The run must outlive it.
  log_threads(log_run& run, unsigned threads);
  log_threads(const log_threads&) = delete;
  log_threads& operator=(const log_threads&) = delete;
  ~log_threads();

  // Calls `read` for the log at `path`, now or later. What it refers to must live until `finish`.
  void add(const std::string& path, task read);
  // Returns when all logs have been read, and whether one of them gave results since the last call.
  bool finish();

  // For a log that is read by several threads; there is no other job in work.
  ordered_work& work();
  // The part of the run that belongs to a thread, for its jobs.
  log_run& part_run(std::size_t thread);
  // Sees whether anybody reads the results. For whoever has the turn to write them.
  void check_output();

 private:
  class part;
  class job;
  class log_tasks;

  part& part_of(std::size_t thread);

  log_run& run_;
  unsigned threads_;
  std::atomic<bool> lost_ = false;
  bool any_results_ = false;
  std::vector<std::unique_ptr<part>> parts_;  // one for each thread, made when needed
  std::shared_ptr<log_tasks> next_;           // of the job added last
  std::unique_ptr<ordered_work> work_;        // made when needed
};

// Calls `read` for the log at `path`, which the run reads next: at once if it has one thread, else
// as a job. Returns whether it gave results, as far as that is known already.
bool read_log(log_run& run, const std::string& path, log_threads::task read);
// Returns when all logs have been read, and whether one that was not known to give results did.
bool finish_logs(log_run& run);

}  // namespace zanvik
