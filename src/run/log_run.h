// A run of the classic door: what it owns besides its options, which stay as the command line gave
// them. Each stage gets the parts that it uses.
#pragma once

#include <atomic>
#include <optional>
#include <ostream>
#include <set>

#include "base/fileio_output.h"
#include "events/log_record.h"
#include "events/log_source.h"
#include "evtx/record_reader.h"
#include "keep/plan_cache.h"
#include "output/timelines/one_timeline.h"
#include "output/write_records.h"
#include "run/evt_output_options.h"
#include "run/log_list.h"
#include "stats/log_statistics.h"

namespace zanvik {

class log_threads;

struct log_run {
  // Classifies the logs that the options name. `options` and `results` must outlive the run.
  log_run(const evt_output_options& run_options, std::ostream& results_stream)
      : options(run_options),
        results(results_stream),
        own_strict(run_options.strict),
        strict(own_strict),
        reader(run_options.format) {
    LogEntry scratch;
    add_logs(options.log_names, scratch, probe, logs);
    if (options.one_timeline) {
      own_timeline.emplace(options.format, sort_settings());
      timeline = &*own_timeline;
    }
  }
  // A part of the run `whole`, with its own knowledge and its own results, for another thread. It
  // only reads what it shares with the whole, which outlives it.
  log_run(log_run& whole, std::ostream& results_stream)
      : options(whole.options),
        results(results_stream),
        is_part(true),
        strict(whole.strict),
        counts(whole.counts),
        reader(whole.options.format) {
    written.header_pending = false;  // the whole run writes it
  }
  log_run(const log_run&) = delete;
  log_run& operator=(const log_run&) = delete;

  const evt_output_options& options;
  std::ostream& results;
  const uni::fileio_output* output = nullptr;  // the same, for questions about it; null in a part
  const bool is_part = false;

  // Several threads; null in a part and in a run of one thread.
  log_threads* jobs = nullptr;
  const std::atomic<bool>* lost = nullptr;  // of a run with several: set when `output` is lost

  // Nobody reads the results any more, and the run has no other output.
  bool ends_early() const {
    if (options.stats_on) return false;
    return lost ? lost->load() : output && output->is_lost();
  }

  strict_notes own_strict;
  strict_notes& strict;                 // those of the command line, then those of the run
  std::set<std::size_t> used_commands;  // with `-strict`: of the command file, by position

  log_probe probe;
  log_map logs;    // those of `-log`; in a run over names as they arrive, the current one
  log_source log;  // the current one

  bool counts = false;            // statistics are taken
  std::ostream* stats = nullptr;  // the open statistics file; null if there is none
  LogStatistics statistics;       // of the log read last

  // Knowledge about templates, for all logs of the run.
  record_reader reader;
  // The records of the current log; what records share is kept for later logs.
  record_container records;
  plan_cache plans;
  output_memory written;
  bool any_written = false;  // there was a record to write

  // With `-one_timeline`, where records wait for the end. Of a part, `timeline` is on the way there.
  std::optional<one_timeline> own_timeline;
  timeline_sink* timeline = nullptr;
};

}  // namespace zanvik
