#include "run/command_run.h"

#include <algorithm>
#include <atomic>
#include <limits>
#include <memory>
#include <new>
#include <optional>
#include <utility>
#include <vector>

#include "base/block_memory.h"
#include "base/console.h"
#include "base/fileio.h"
#include "evt/evt.h"
#include "evtx/evtx.h"
#include "output/write_records.h"
#include "pipeline/ordered_work.h"
#include "run/log_progress.h"
#include "run/log_reading.h"
#include "run/log_threads.h"

namespace zanvik {
namespace {

// A log above this size is written in parts of this many records, each sorted separately.
constexpr std::uint64_t large_log_bytes = 0x10000000;
constexpr std::size_t large_log_flush = 200000;

// A log of more blocks is read by several threads, if the run has them.
constexpr std::uint64_t blocks_for_threads = 2;

// Whether a file with these first eight bytes may have records: an .evtx file or only its chunks,
// or a legacy log, whose header may have any size.
bool may_hold_records(std::uint64_t head) {
  return head == evtx_layout::file_signature || head == evtx_layout::chunk_signature ||
         head >> 32 == evt_layout::signature;
}

// The walk of one log with the commands for it.
class log_walk {
 public:
  log_walk(const command_refs& commands, log_run& run)
      : commands_(commands),
        run_(run),
        options_(run.options),
        progress_(options_, run.log.path),
        reading_(commands, run, run.log, run.is_part ? nullptr : progress_.if_wanted()),
        hist_count_(static_cast<std::size_t>(
            std::count_if(commands.begin(), commands.end(),
                          [](const ReportCommand* command) { return command->has_hist; }))) {
    run_.records.clear_records();  // of a log that an exception ended
    run_.plans.drop_if_full();
    if (run_.timeline) run_.timeline->start_log();
  }
  log_walk(const log_walk&) = delete;
  log_walk& operator=(const log_walk&) = delete;

  // Returns whether the log was walked to its end.
  bool walk_log(const std::string& path) {
    uni::fileio own_file;
    log_file& open_log = run_.probe.file;
    uni::fileio& log = open_log.is_open(path) ? open_log.file() : own_file;
    if (!log.is_open() && !log.open(path)) return pass_over(path);
    const std::uint64_t size = log.get_size();
    if (size > large_log_bytes) flush_limit_ = large_log_flush;
    const auto head = read_head(log);
    if (!head) return pass_over(path);
    const bool is_evtx = is_evtx_ = head == evtx_layout::file_signature;
    reset_statistics(run_.statistics, path);
    if (!may_hold_records(*head)) return !pass_over(path);  // not read whole
    const std::uint64_t first_offset = is_evtx ? evtx_layout::file_header_bytes : 0;
    std::uint64_t block_bytes = is_evtx ? evtx_layout::block_bytes : size;
    constexpr std::uint64_t four_gib = std::uint64_t{1} << 32;
    if (size < four_gib && size <= block_bytes) block_bytes = size - first_offset;
    const bool walked = walk(log, block_bytes, first_offset);
    if (walked && !run_.records.empty()) write_results();
    return walked;
  }

 private:
  class block_job;

  // The first eight bytes, 0 if the file is shorter; nothing if the log cannot be read.
  std::optional<std::uint64_t> read_head(uni::fileio& log) {
    std::byte head[8];
    std::size_t count = sizeof(head);
    if (&log == &run_.probe.file.file()) {
      return byte_cursor(run_.probe.file.first(count)).at_or_zero<std::uint64_t>(0);
    }
    if (!log.read_raw(head, count, 0)) return std::nullopt;
    return byte_cursor(std::span(head, count)).at_or_zero<std::uint64_t>(0);
  }

  bool pass_over(const std::string& path) {
    run_.strict.add(path + " is no event log, or cannot be read");
    return false;
  }

  bool walk(uni::fileio& log, std::uint64_t block_bytes, std::uint64_t first_offset) {
    // A small log was already read whole to classify it.
    const auto all =
        &log == &run_.probe.file.file() ? run_.probe.file.take_all() : std::span<std::byte>();
    if (all.size() > first_offset && all.size() - first_offset <= block_bytes) {
      walk_block(all.subspan(first_offset), first_offset);
      return true;
    }
    if (run_.jobs && is_evtx_ && log.get_size() > blocks_for_threads * block_bytes) {
      return walk_by_threads(log, block_bytes, first_offset);
    }
    return log.walk_blocks(block_bytes, first_offset,
                           [this](std::span<std::byte> block, std::uint64_t offset) {
                             walk_block(block, offset);
                             return !run_.ends_early();
                           });
  }

  void walk_block(std::span<std::byte> block, std::uint64_t offset) {
    note_result(reading_.read(block, offset), offset);
    if (run_.records.size() < flush_limit_) return;
    write_results();
    if (!run_.timeline) run_.results << '\n';
  }

  void note_result(walk_result result, std::uint64_t offset) {
    if (!is_evtx_ || result == walk_result::walked) return;
    run_.strict.add(run_.log.path + ": the block at " + std::to_string(offset) +
                    " starts with no whole chunk and is not read");
  }

  void reset_statistics(LogStatistics& statistics, const std::string& path) const {
    init_statistics(statistics, path, "", is_evtx_, hist_count_, options_.format.date_format,
                    options_.format.time_format);
  }

  bool walk_by_threads(uni::fileio& log, std::uint64_t block_bytes, std::uint64_t first_offset);
  void add_records(record_batch batch);
  void write_full_parts();

  void write_results() {
    // Results and status may share a terminal: neither may end up in a line of the other.
    const bool on_terminal = run_.output && run_.output->is_terminal();
    if (on_terminal && options_.show_status) clear_status();
    const write_context context{.log = run_.log,
                                .inc_slack = options_.inc_slack,
                                .show_offsets = options_.show_offsets,
                                .allparams = options_.allparams,
                                .username = options_.username,
                                .hostname = options_.hostname,
                                .program_name = options_.program_name};
    run_.any_written = true;
    if (run_.timeline) {
      run_.timeline->add(run_.records.in_time_order(), context);
    } else {
      write_records(run_.results, run_.records, options_.format, context, run_.written,
                    run_.jobs ? &run_.jobs->work() : nullptr);
    }
    if (on_terminal) run_.results.flush();
    run_.records.clear_records();
  }

  const command_refs& commands_;
  log_run& run_;
  const evt_output_options& options_;
  log_progress progress_;
  log_reading reading_;
  bool is_evtx_ = false;
  std::size_t hist_count_;  // commands that count combinations of fields
  std::size_t flush_limit_ = std::numeric_limits<std::size_t>::max();

  // Only with several threads. Records past the flush limit wait until those before are written.
  std::atomic<bool> full_ = false;
  std::vector<record_batch> waiting_;
};

// Several threads: what one of them has for the blocks that it reads.
struct block_reading {
  block_reading(const command_refs& commands, log_run& part, const log_source& log,
                std::uint64_t block_bytes)
      : run(part), memory(block_bytes), reading(commands, part, log, nullptr) {}
  log_run& run;
  uni::block_memory memory;
  log_reading reading;
};

// A block of a log, read by a thread; its records join those of the log in their order.
class log_walk::block_job : public ordered_job {
 public:
  struct shared {
    log_walk& walk;
    const uni::fileio& log;
    std::uint64_t block_bytes;
    std::vector<std::unique_ptr<block_reading>> readings;  // by thread, made when needed
  };

  block_job(shared& of, uni::fileio::block block) : of_(of), block_(block) {}

  void work(std::size_t thread) override {
    log_run& run = of_.walk.run_;
    if (run.ends_early()) return;
    auto& own = of_.readings[thread];
    if (!own) own = start_thread(thread);
    const std::span<std::byte> buffer = own->memory.bytes();
    if (buffer.size() < block_.size) throw std::bad_alloc();
    const std::size_t count = of_.log.read_block(buffer.first(block_.size), block_.offset);
    if (count == 0) return;
    if (run.counts) of_.walk.reset_statistics(own->run.statistics, run.statistics.log_path);
    result_ = own->reading.read(buffer.first(count), block_.offset);
    records_ = own->run.records.take();
    if (run.counts) statistics_ = std::move(own->run.statistics);
  }

  void commit() override {
    log_walk& walk = of_.walk;
    if (!result_) return;
    walk.note_result(*result_, block_.offset);
    if (walk.run_.counts) add_statistics(walk.run_.statistics, statistics_);
    if (!records_.records.empty()) walk.progress_.at_block(records_.records.back()->record_number);
    walk.add_records(std::move(records_));
    walk.run_.jobs->check_output();
  }

 private:
  std::unique_ptr<block_reading> start_thread(std::size_t thread) const {
    log_run& part = of_.walk.run_.jobs->part_run(thread);
    part.records.clear_records();
    part.records.share_with(of_.walk.run_.records);
    part.plans.drop_if_full();
    return std::make_unique<block_reading>(of_.walk.commands_, part, of_.walk.run_.log,
                                           of_.block_bytes);
  }

  shared& of_;
  uni::fileio::block block_;
  std::optional<walk_result> result_;
  record_batch records_;
  LogStatistics statistics_;
};

bool log_walk::walk_by_threads(uni::fileio& log, std::uint64_t block_bytes,
                               std::uint64_t first_offset) {
  const auto size = static_cast<std::size_t>(block_bytes);
  ordered_work& work = run_.jobs->work();
  block_job::shared shared{*this, log, block_bytes, {}};
  shared.readings.resize(work.threads());
  const finished_work finished(work);
  for (auto next = log.next_block(size, first_offset); next && !run_.ends_early();
       next = log.next_block(size, next->offset + next->size)) {
    work.add(std::make_unique<block_job>(shared, *next));
    if (!full_) continue;
    work.finish();
    write_full_parts();
    // What records share may be another one now.
    for (auto& reading : shared.readings) reading.reset();
  }
  work.finish();
  write_full_parts();
  return !run_.ends_early();
}

// In the order of the blocks.
void log_walk::add_records(record_batch batch) {
  if (full_) return waiting_.push_back(std::move(batch));
  run_.records.add(std::move(batch));
  full_ = run_.records.size() >= flush_limit_;
}

// While no thread is at work.
void log_walk::write_full_parts() {
  while (full_) {
    write_results();
    if (!run_.timeline) run_.results << '\n';
    full_ = false;
    for (record_batch& batch : std::exchange(waiting_, {})) add_records(std::move(batch));
  }
}

}  // namespace

bool run_command_set(const CommandSet& set, log_run& run) {
  bool walked = false;
  for (auto group = set.begin(); group != set.end(); group = set.upper_bound(group->first)) {
    command_refs commands;
    const auto [first, last] = set.equal_range(group->first);
    for (auto command = first; command != last; ++command) commands.add(command->second);
    if (log_walk(commands, run).walk_log(commands[0].log_path)) walked = true;
  }
  return walked;
}

}  // namespace zanvik
