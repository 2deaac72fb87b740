#include "pipeline/ordered_work.h"

#include <signal.h>

#include <system_error>
#include <utility>

#include "base/heap_pages.h"
#include "base/limits.h"

namespace zanvik {

void ordered_job::wait_turn() {
  if (!owner_) return;  // one thread: it is always this job's turn
  ordered_work::lock held(owner_->mutex_);
  owner_->for_turn_.wait(held, [this] { return owner_->first_number_ == number_; });
}

bool ordered_job::has_turn() const {
  if (!owner_) return true;
  const ordered_work::lock held(owner_->mutex_);
  return owner_->first_number_ == number_;
}

ordered_work::ordered_work(unsigned threads) {
  if (threads < 2) return;
  threads_.reserve(threads);
  sigset_t all, before;  // a new thread has the mask of the one that makes it
  ::sigfillset(&all);
  ::pthread_sigmask(SIG_SETMASK, &all, &before);
  try {
    for (std::size_t i = 0; i < threads; ++i) threads_.emplace_back([this, i] { run(i); });
  } catch (const std::system_error&) {  // the system has no more: these are enough
  }
  ::pthread_sigmask(SIG_SETMASK, &before, nullptr);
}

ordered_work::~ordered_work() {
  {
    const lock held(mutex_);
    ending_ = true;
  }
  for_threads_.notify_all();
  for (std::thread& thread : threads_) thread.join();
}

void ordered_work::add(std::unique_ptr<ordered_job> job, std::size_t waiting_jobs) {
  if (threads_.empty()) {
    job->work(0);
    job->commit();
    return;
  }
  lock held(mutex_);
  most_waiting_ = waiting_jobs * threads_.size();
  if (jobs_.size() - started_ >= most_waiting_) {
    // Until half of them have started, so that it waits less often.
    for_caller_.wait(held,
                     [this] { return jobs_.size() - started_ <= most_waiting_ / 2 || error_; });
  }
  if (error_) return;
  job->owner_ = this;
  job->number_ = first_number_ + jobs_.size();
  jobs_.push_back(std::move(job));
  if (may_start()) for_threads_.notify_one();
}

void ordered_work::finish() {
  if (threads_.empty()) return;
  lock held(mutex_);
  for_caller_.wait(held, [this] { return jobs_.empty() && !committing_; });
  if (error_) std::rethrow_exception(std::exchange(error_, nullptr));
}

// The first job may always start: all others may have to wait for it.
bool ordered_work::may_start() const {
  if (started_ == jobs_.size()) return false;
  return started_ == 0 || (started_ < limits::jobs_per_thread * threads_.size() &&
                           waiting_bytes_ < limits::waiting_bytes_per_thread * threads_.size());
}

void ordered_work::run(std::size_t thread) {
  use_large_pages_in_thread();
  lock held(mutex_);
  for (;;) {
    for_threads_.wait(held, [this] { return may_start() || ending_; });
    if (ending_) return;
    ordered_job& job = *jobs_[started_++];
    job.state_ = ordered_job::state::working;
    if (jobs_.size() - started_ == most_waiting_ / 2) for_caller_.notify_one();
    held.unlock();
    std::exception_ptr error;
    try {
      job.work(thread);
    } catch (...) {
      error = std::current_exception();
    }
    held.lock();
    job.state_ = ordered_job::state::done;
    waiting_bytes_ += job.waiting_bytes();
    if (error) fail(error);
    if (!committing_) commit_done(held);
  }
}

// Commits what is done at the front; another thread may add to that meanwhile. `commit` runs
// without the lock.
void ordered_work::commit_done(lock& held) {
  committing_ = true;
  while (!jobs_.empty() && jobs_.front()->state_ == ordered_job::state::done) {
    ordered_job& job = *jobs_.front();
    const std::uint64_t bytes = job.waiting_bytes();
    if (!error_) {
      held.unlock();
      std::exception_ptr error;
      try {
        job.commit();
      } catch (...) {
        error = std::current_exception();
      }
      held.lock();
      if (error) fail(error);
    }
    std::unique_ptr<ordered_job> committed = std::move(jobs_.front());
    jobs_.pop_front();
    ++first_number_;
    --started_;
    waiting_bytes_ -= bytes;
    for_turn_.notify_all();
    for_threads_.notify_all();
    held.unlock();  // what the job held may take long to free
    committed.reset();
    held.lock();
  }
  committing_ = false;
  for_caller_.notify_all();
}

// Jobs that have not started are dropped; those at work are not committed.
void ordered_work::fail(std::exception_ptr error) {
  if (!error_) error_ = std::move(error);
  while (jobs_.size() > started_) jobs_.pop_back();
  for_caller_.notify_all();
}

}  // namespace zanvik
