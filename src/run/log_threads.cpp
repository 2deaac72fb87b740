#include "run/log_threads.h"

#include <sys/stat.h>

#include <algorithm>
#include <exception>
#include <iterator>
#include <mutex>
#include <sstream>
#include <streambuf>
#include <string_view>
#include <utility>

#include "base/console.h"
#include "base/limits.h"
#include "output/timelines/timeline_text.h"

namespace zanvik {
namespace {

// A log above this size is read by all threads together.
constexpr off_t large_log_bytes = off_t{8} << 20;

// Small logs are read so many in one job, if they come faster than they are read: waking a thread
// takes as long as reading one.
constexpr std::size_t logs_in_job = 16;

// Records of one timeline are made into lines so many at a time.
constexpr std::size_t records_at_once = 4096;

bool is_large(const std::string& path) {
  struct stat status = {};
  return ::stat(path.c_str(), &status) == 0 && status.st_size > large_log_bytes;
}

}  // namespace

// The logs of a job, to which more are added until it starts.
class log_threads::log_tasks {
 public:
  // Returns false if the job has started or has enough.
  bool add(task& read) {
    const std::lock_guard held(mutex_);
    if (started_ || tasks_.size() == logs_in_job) return false;
    tasks_.push_back(std::move(read));
    return true;
  }
  std::vector<task> start() {
    const std::lock_guard held(mutex_);
    started_ = true;
    return std::move(tasks_);
  }

 private:
  std::mutex mutex_;
  std::vector<task> tasks_;
  bool started_ = false;
};

// Logs that are read one after the other. Their results are kept, until they are too large: then
// the job waits for its turn, and from then on passes them on.
class log_threads::job : public ordered_job, public std::streambuf, public timeline_sink {
 public:
  job(log_threads& jobs, std::shared_ptr<log_tasks> tasks)
      : jobs_(jobs), tasks_(std::move(tasks)) {}

  void work(std::size_t thread) override;
  void commit() override;
  std::uint64_t waiting_bytes() const override { return results_.capacity() + lines_.bytes(); }

  void start_log() override { lines_.start_log(); }
  void add(std::span<const LogRecord* const> records, const write_context& context) override;

 protected:
  std::streamsize xsputn(const char* text, std::streamsize count) override;
  int_type overflow(int_type c) override;

 private:
  void read_logs(log_run& run);
  void pass_on_if_large();
  void pass_on();

  log_threads& jobs_;
  std::shared_ptr<log_tasks> tasks_;
  log_run* part_run_ = nullptr;  // while it reads the logs
  std::string results_;
  timeline_part lines_;
  held_messages::list messages_;
  std::string stats_text_;
  LogStatistics statistics_;
  std::set<std::size_t> used_commands_;
  bool any_written_ = false;
  bool any_results_ = false;
  std::exception_ptr error_;
};

// What reads logs on one thread.
class log_threads::part {
 public:
  explicit part(log_run& whole) : stream(nullptr), run(whole, stream) {
    run.lost = whole.lost;
    if (whole.stats) run.stats = &stats;
  }
  std::ostream stream;
  std::ostringstream stats;
  log_run run;
};

void log_threads::job::work(std::size_t thread) {
  part& own = jobs_.part_of(thread);
  log_run& run = own.run;
  const held_messages hold(messages_);
  own.stream.rdbuf(this);  // clears its state
  own.stats.str({});
  run.timeline = jobs_.run_.timeline ? this : nullptr;
  run.used_commands.clear();
  run.any_written = false;
  part_run_ = &run;
  try {
    read_logs(run);
  } catch (...) {
    error_ = std::current_exception();  // what there is, is passed on before
  }
  part_run_ = nullptr;
  own.stream.rdbuf(nullptr);
  any_written_ = run.any_written;
  if (run.stats) stats_text_ = own.stats.str();
  used_commands_ = std::move(run.used_commands);
}

void log_threads::job::read_logs(log_run& run) {
  for (const task& read : tasks_->start()) {
    if (run.ends_early()) return;
    run.statistics = {};
    any_results_ = read(run) || any_results_;
    // A log that could not be read leaves them as they were.
    if (!run.statistics.log_path.empty()) statistics_ = std::move(run.statistics);
  }
}

void log_threads::job::commit() {
  pass_on();
  log_run& whole = jobs_.run_;
  if (whole.stats) *whole.stats << stats_text_;
  if (!statistics_.log_path.empty()) whole.statistics = std::move(statistics_);
  whole.used_commands.merge(used_commands_);
  jobs_.any_results_ = jobs_.any_results_ || any_results_;
  jobs_.check_output();
  if (error_) std::rethrow_exception(error_);
}

void log_threads::job::add(std::span<const LogRecord* const> records,
                           const write_context& context) {
  while (!records.empty()) {
    const std::size_t count = std::min(records.size(), records_at_once);
    lines_.add(records.first(count), part_run_->options.format, context);
    records = records.subspan(count);
    pass_on_if_large();
  }
}

std::streamsize log_threads::job::xsputn(const char* text, std::streamsize count) {
  results_.append(text, static_cast<std::size_t>(count));
  pass_on_if_large();
  return count;
}

log_threads::job::int_type log_threads::job::overflow(int_type c) {
  if (!traits_type::eq_int_type(c, traits_type::eof())) results_ += traits_type::to_char_type(c);
  return traits_type::not_eof(c);
}

void log_threads::job::pass_on_if_large() {
  if (results_.size() + lines_.bytes() < limits::part_result_bytes) return;
  wait_turn();
  any_written_ = part_run_->any_written;
  pass_on();
  jobs_.check_output();
}

// Only in its turn.
void log_threads::job::pass_on() {
  log_run& whole = jobs_.run_;
  held_messages::tell(messages_);
  const output_format& format = whole.options.format;
  if (any_written_ && (format.output_l2t || format.output_bodyfile) && !whole.timeline &&
      std::exchange(whole.written.header_pending, false)) {
    whole.results << timeline_head(format);
  }
  if (whole.own_timeline) whole.own_timeline->add(lines_);
  lines_.clear();
  if (results_.empty()) return;
  whole.results.write(results_.data(), static_cast<std::streamsize>(results_.size()));
  results_.clear();
}

log_threads::log_threads(log_run& run, unsigned threads) : run_(run), threads_(threads) {
  if (threads < 2) return;
  run.jobs = this;
  run.lost = &lost_;
}

log_threads::~log_threads() {
  work_.reset();
  // The run ends: what its parts have learnt of templates is left to the end of the process, which
  // frees it all at once.
  static auto& left = *new std::vector<std::unique_ptr<part>>;
  std::move(parts_.begin(), parts_.end(), std::back_inserter(left));
  run_.jobs = nullptr;
  run_.lost = nullptr;
}

void log_threads::add(const std::string& path, task read) {
  const bool is_only_one = !run_.options.walk.is_stream_run() && run_.logs.size() == 1;
  if (is_only_one || is_large(path)) {
    any_results_ = finish() || any_results_;
    any_results_ = read(run_) || any_results_;
    check_output();
    return;
  }
  if (next_ && next_->add(read)) return;
  next_ = std::make_shared<log_tasks>();
  (void)next_->add(read);
  work().add(std::make_unique<job>(*this, next_), ordered_work::small_jobs);
}

bool log_threads::finish() {
  if (work_) work_->finish();
  return std::exchange(any_results_, false);
}

ordered_work& log_threads::work() {
  if (!work_) {
    work_ = std::make_unique<ordered_work>(threads_);
    parts_.resize(work_->threads());
  }
  return *work_;
}

log_run& log_threads::part_run(std::size_t thread) { return part_of(thread).run; }

log_threads::part& log_threads::part_of(std::size_t thread) {
  if (!parts_[thread]) parts_[thread] = std::make_unique<part>(run_);
  return *parts_[thread];
}

void log_threads::check_output() {
  if (run_.output && run_.output->is_lost()) lost_ = true;
}

bool read_log(log_run& run, const std::string& path, log_threads::task read) {
  if (!run.jobs) return read(run);
  run.jobs->add(path, std::move(read));
  return false;
}

bool finish_logs(log_run& run) { return run.jobs && run.jobs->finish(); }

}  // namespace zanvik
