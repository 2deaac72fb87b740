// The logs of a run, read part by part on several threads, with results in the order of the logs.
//
// In: paths, and a worker for each thread. Each part of a log (source/log_parts.h) is a job: a
// worker reads it, its result is passed on when those of all earlier parts are. Messages about logs
// keep that order too, and what a log lost is reported in one line after its last part. With one
// thread no thread is made: a part is read and passed on before the next one.
//
// SIGINT and SIGTERM stop the reading; what was read until then is passed on.
//
// Results that wait are bounded: a worker asks `part_turn` as its result grows.
#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "base/limits.h"
#include "pipeline/ordered_work.h"
#include "source/log_events.h"
#include "verbs/progress_line.h"

namespace CLI {
class App;
}

namespace zanvik {

// Adds --threads; 0 stands for all usable processors.
void add_threads_option(CLI::App& app, unsigned& threads);

// What a worker makes of a part.
class part_result {
 public:
  virtual ~part_result() = default;
  // Passes on what is there so far and forgets it. Called in the order of the parts, one at a time.
  virtual void pass_on() = 0;
  virtual std::uint64_t waiting_bytes() const = 0;

  log_losses lost;
  bool cut_short = false;  // by a stop signal: nothing behind this is passed on
};

// Whose turn it is.
class part_turn {
 public:
  virtual ~part_turn() = default;
  // Says how much the result holds. True if it is this part's turn: `pass_on` may be called. With
  // much in hand, this waits for the turn.
  virtual bool has_come(std::uint64_t waiting_bytes) = 0;
  // Bytes of the log that have been read; shown if it is this part's turn.
  virtual void show_progress(std::uint64_t bytes) = 0;
};

// Belongs to one thread.
class log_worker {
 public:
  virtual ~log_worker() = default;
  virtual std::unique_ptr<part_result> read(log_part& part, part_turn& turn) = 0;
};

class log_jobs {
 public:
  struct settings {
    unsigned threads = 0;     // 0: all usable processors
    bool whole_logs = false;  // parts are whole logs
    bool shows_progress = false;
    std::uint64_t total_bytes = 0;  // for the progress
    carve_what carve = carve_what::nothing;
  };
  using worker_maker = std::function<std::unique_ptr<log_worker>()>;
  using problem_use = std::function<void(const std::string& path, const std::string& what)>;

  // `make_worker` is called on any thread; `on_problem` in order.
  log_jobs(const settings& wanted, worker_maker make_worker, problem_use on_problem);
  ~log_jobs();

  std::size_t threads() const { return work_.threads(); }
  // Returns when all results are passed on; after SIGINT or SIGTERM, those up to some part.
  void read(const std::vector<std::string>& paths);
  // The signal that ended the reading; 0 if it came to its end.
  int stopped_by() const { return stopped_by_; }

 private:
  class job;
  class message;

  void add(found_log& found);
  void end_part(const log_part& part, std::uint64_t log_bytes, const std::string& path,
                const log_losses& lost);

  const settings settings_;
  const worker_maker make_worker_;
  const problem_use on_problem_;
  std::uint64_t most_bytes_ = limits::part_result_bytes;
  block_memory memory_;
  std::vector<std::unique_ptr<log_worker>> workers_;  // by thread; made when needed
  std::uint64_t logs_found_ = 0;
  // Of the results that are passed on.
  progress_line progress_;
  std::uint64_t bytes_done_ = 0;  // of logs that are done
  log_losses lost_;               // of the log in hand
  std::atomic<bool> cut_short_ = false;
  int stopped_by_ = 0;
  ordered_work work_;  // ends first
};

}  // namespace zanvik
