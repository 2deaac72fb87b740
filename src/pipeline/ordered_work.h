// Jobs on several threads, with their results in the order of the jobs.
//
// In: jobs, in order. Each does its work on some thread, beside others; then `commit` is called for
// one job at a time, in the order in which they were added. So what a run writes does not depend on
// the number of threads. With one thread, `add` works and commits at once, and no thread is made.
//
// Memory: results that wait for an earlier job to be committed are limited in bytes and number
// (limits.h); then no further job starts. The first job that is not committed is always at work, so
// nothing waits for ever. A job whose result grows large calls `wait_turn`, and from then on may
// pass on its result as it is made.
//
// Threads take no signals: those are for the thread of the caller.
//
// An exception in a job ends the work: jobs that have not started are dropped; `finish` throws it.
#pragma once

#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <exception>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

namespace zanvik {

class ordered_work;

class ordered_job {
 public:
  virtual ~ordered_job() = default;
  // Runs on the thread with this number, from 0; no two jobs run on one thread at the same time, so
  // what belongs to a thread needs no lock.
  virtual void work(std::size_t thread) = 0;
  // Passes on the result. Called in the order of the jobs, on any thread.
  virtual void commit() = 0;
  // What the result holds while it waits, in bytes.
  virtual std::uint64_t waiting_bytes() const { return 0; }

 protected:
  // For `work`: returns when all earlier jobs are committed. Until `work` ends, no other is.
  void wait_turn();
  // For `work`: whether all earlier jobs are committed.
  bool has_turn() const;

 private:
  friend class ordered_work;
  enum class state { waiting, working, done };
  ordered_work* owner_ = nullptr;
  std::uint64_t number_ = 0;
  state state_ = state::waiting;
};

class ordered_work {
 public:
  // `threads`: at least 1. There may be fewer, if the system has no more.
  explicit ordered_work(unsigned threads);
  ordered_work(const ordered_work&) = delete;
  ordered_work& operator=(const ordered_work&) = delete;
  // Drops the jobs that have not started and waits for the others.
  ~ordered_work();

  std::size_t threads() const { return threads_.empty() ? 1 : threads_.size(); }

  // Waits while too many jobs wait for a thread: so many for each of them, more if jobs are small
  // and hold little, since waiting costs as much as a small job. After an exception, does nothing.
  static constexpr std::size_t small_jobs = 16;
  void add(std::unique_ptr<ordered_job> job, std::size_t waiting_jobs = 1);
  // Returns when all jobs are committed. Throws what a job threw. More jobs may follow.
  void finish();

 private:
  friend class ordered_job;
  using lock = std::unique_lock<std::mutex>;

  void run(std::size_t thread);
  bool may_start() const;
  void commit_done(lock& held);
  void fail(std::exception_ptr error);

  std::mutex mutex_;
  std::condition_variable for_threads_, for_caller_, for_turn_;
  std::deque<std::unique_ptr<ordered_job>> jobs_;  // those not committed, in order
  std::uint64_t first_number_ = 0;                 // of jobs_.front()
  std::size_t started_ = 0;                        // of `jobs_`, from the front
  std::size_t most_waiting_ = 0;                   // jobs that have not started
  std::uint64_t waiting_bytes_ = 0;                // of results
  bool committing_ = false, ending_ = false;
  std::exception_ptr error_;
  std::vector<std::thread> threads_;
};

// Waits at the end of its scope until no job is left that refers to what is in the scope. Errors
// are those of `finish`, which comes before it.
class finished_work {
 public:
  explicit finished_work(ordered_work& work) : work_(work) {}
  finished_work(const finished_work&) = delete;
  finished_work& operator=(const finished_work&) = delete;
  ~finished_work() {
    try {
      work_.finish();
    } catch (...) {  // an exception is on its way already
    }
  }

 private:
  ordered_work& work_;
};

}  // namespace zanvik
