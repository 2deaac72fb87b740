#include "run/command_run.h"

#include <algorithm>
#include <limits>
#include <optional>
#include <vector>

#include "base/console.h"
#include "base/fileio.h"
#include "evt/evt.h"
#include "evtx/evtx.h"
#include "keep/keeping_sink.h"
#include "output/write_records.h"
#include "run/log_progress.h"
#include "select/evt_selector.h"
#include "select/evtx_selector.h"
#include "stats/counting_sinks.h"

namespace zanvik {
namespace {

// A log above this size is written in parts of this many records, each sorted separately.
constexpr std::uint64_t large_log_bytes = 0x10000000;
constexpr std::size_t large_log_flush = 200000;

// The size of a legacy log is 32 bits: one of just 4 GiB has the size 0 and yields nothing. Meant.
constexpr std::uint64_t evt_bytes_end = std::uint64_t{1} << 32;

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
      : run_(run),
        options_(run.options),
        keeping_(commands, run.records, run.plans),
        combinations_(run.statistics, commands, run.records, keeping_),
        selector_(commands, selection()),
        evt_selector_(commands, selection()),
        counter_(run.statistics, run.log.channel, selector_, evt_selector_),
        progress_(options_, run.log.path),
        settings_{options_.inc_slack, run.is_part ? nullptr : progress_.if_wanted(),
                  options_.reading},
        hist_count_(static_cast<std::size_t>(
            std::count_if(commands.begin(), commands.end(),
                          [](const ReportCommand* command) { return command->has_hist; }))) {
    run_.records.start_log();
    run_.records.clear_records();  // of a log that an exception ended
    run_.plans.drop_if_full();
    if (run_.timeline) run_.timeline->start_log();
  }

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
    init_statistics(run_.statistics, path, "", is_evtx, hist_count_, options_.format.date_format,
                    options_.format.time_format);
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
  // Where selected records go: statistics count them on their way.
  selection_sink& selection() {
    return run_.counts ? combinations_ : static_cast<selection_sink&>(keeping_);
  }

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
    return log.walk_blocks(block_bytes, first_offset,
                           [this](std::span<std::byte> block, std::uint64_t offset) {
                             walk_block(block, offset);
                             return !run_.ends_early();
                           });
  }

  void walk_block(std::span<std::byte> block, std::uint64_t offset) {
    run_.records.add_log_bytes(block.size());
    record_sink& sink = run_.counts ? counter_ : static_cast<record_sink&>(selector_);
    const auto result = walk_evtx_block(block, offset, run_.reader, sink, settings_);
    if (is_evtx_ && result != walk_result::walked) {
      run_.strict.add(run_.log.path + ": the block at " + std::to_string(offset) +
                      " starts with no whole chunk and is not read");
    }
    if (result == walk_result::not_evtx && block.size() < evt_bytes_end) {
      walk_evt_log(block, run_.counts ? counter_ : static_cast<evt_sink&>(evt_selector_));
    }
    if (run_.records.size() < flush_limit_) return;
    write_results();
    if (!run_.timeline) run_.results << '\n';
  }

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
      write_records(run_.results, run_.records, options_.format, context, run_.written);
    }
    if (on_terminal) run_.results.flush();
    run_.records.clear_records();
  }

  log_run& run_;
  const evt_output_options& options_;
  keeping_sink keeping_;
  combination_counter combinations_;
  evtx_selector selector_;
  evt_selector evt_selector_;
  record_counter counter_;
  log_progress progress_;
  walk_settings settings_;
  bool is_evtx_ = false;
  std::size_t hist_count_;  // commands that count combinations of fields
  std::size_t flush_limit_ = std::numeric_limits<std::size_t>::max();
};

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
