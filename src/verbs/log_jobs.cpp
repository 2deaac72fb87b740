#include "verbs/log_jobs.h"

#include <CLI/CLI.hpp>
#include <utility>

#include "base/limits.h"
#include "base/stop_signal.h"
#include "pipeline/processors.h"

namespace zanvik {
namespace {

// How often a part asks whether its turn has come.
constexpr std::uint64_t asking_bytes = 256 << 10;

}  // namespace

void add_threads_option(CLI::App& app, unsigned& threads) {
  app.add_option("--threads", threads,
                 "read on this many threads; all usable processors without it. The results are the "
                 "same for any number")
      ->check(CLI::Range(1u, limits::threads))
      ->type_name("N");
}

// A message between the results of logs.
class log_jobs::message : public ordered_job {
 public:
  message(const log_jobs& owner, std::string path, std::string what)
      : owner_(owner), path_(std::move(path)), what_(std::move(what)) {}
  void work(std::size_t) override {}
  void commit() override {
    if (!owner_.cut_short_) owner_.on_problem_(path_, what_);
  }

 private:
  const log_jobs& owner_;
  const std::string path_, what_;
};

class log_jobs::job : public ordered_job, public part_turn {
 public:
  job(log_jobs& owner, log_part&& part)
      : owner_(owner),
        part_(std::move(part)),
        size_(part_.log->size),
        path_(part_.log->source.path) {}

  void work(std::size_t thread) override {
    auto& worker = owner_.workers_[thread];
    if (!worker) worker = owner_.make_worker_();
    result_ = worker->read(part_, *this);
    if (!part_.bytes.empty()) owner_.memory_.give_back(std::move(part_.bytes));
    part_.log.reset();  // closes the file, if this was its last part
    waiting_bytes_ = result_->waiting_bytes();
  }
  void commit() override {
    if (owner_.cut_short_) return;
    result_->pass_on();
    owner_.cut_short_ = result_->cut_short;
    if (result_->cut_short) return;
    owner_.end_part(part_, size_, path_, result_->lost);
  }
  std::uint64_t waiting_bytes() const override { return waiting_bytes_; }

  bool has_come(std::uint64_t bytes) override {
    if (owner_.cut_short_) return false;
    if (mine_ || bytes < ask_at_) return mine_;
    ask_at_ = bytes + asking_bytes;
    if (bytes >= owner_.most_bytes_) wait_turn();
    mine_ = has_turn();
    return mine_ && !owner_.cut_short_;
  }
  void show_progress(std::uint64_t bytes) override {
    mine_ = mine_ || has_turn();
    if (mine_) owner_.progress_.update(owner_.bytes_done_ + bytes);
  }

 private:
  log_jobs& owner_;
  log_part part_;
  const std::uint64_t size_;  // of the log
  const std::string path_;
  std::unique_ptr<part_result> result_;
  std::uint64_t waiting_bytes_ = 0;
  std::uint64_t ask_at_ = 0;
  bool mine_ = false;
};

log_jobs::log_jobs(const settings& wanted, worker_maker make_worker, problem_use on_problem)
    : settings_(wanted),
      make_worker_(std::move(make_worker)),
      on_problem_(std::move(on_problem)),
      progress_(wanted.shows_progress, wanted.total_bytes),
      work_(wanted.threads != 0 ? wanted.threads : usable_processors()) {
  workers_.resize(work_.threads());
  // Two threads whose turns alternate need half a block's result at most; less memory is less to
  // clear, and stays in the cache.
  if (work_.threads() == 2) most_bytes_ /= 2;
}

log_jobs::~log_jobs() = default;

void log_jobs::read(const std::vector<std::string>& paths) {
  log_finder finder([this](found_log& log) { add(log); },
                    [this](const std::string& path, const std::string& what) {
                      work_.add(std::make_unique<message>(*this, path, what));
                    });
  finder.carve(settings_.carve);
  catch_stop_signals();
  for (const std::string& path : paths) finder.find(path);
  const int signal = stop_signal();
  work_.finish();
  if (signal != 0 || cut_short_) stopped_by_ = stop_signal();
}

void log_jobs::add(found_log& found) {
  const std::uint64_t number = ++logs_found_;
  const auto log = std::make_shared<const found_log>(std::move(found));
  const auto use = [&](log_part&& part) {
    part.number = number;
    const bool shared = is_shared(part);
    work_.add(std::make_unique<job>(*this, std::move(part)));
    if (!shared) work_.finish();
  };
  if (settings_.whole_logs) {
    use(whole_log(log));
  } else {
    cut_log(log, memory_, use);
  }
}

void log_jobs::end_part(const log_part& part, std::uint64_t log_bytes, const std::string& path,
                        const log_losses& lost) {
  lost_.add(lost);
  progress_.update(bytes_done_ + part.offset + part.size);
  if (!part.last) return;
  bytes_done_ += log_bytes;
  const std::string problem = std::exchange(lost_, {}).report();
  if (!problem.empty()) on_problem_(path, problem);
}

}  // namespace zanvik
