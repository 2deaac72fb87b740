#include "verbs/timeline_logs.h"

#include <algorithm>
#include <utility>
#include <vector>

#include "evt/evt.h"
#include "keep/keeping_sink.h"
#include "run/run_reports.h"
#include "select/evt_selector.h"
#include "select/evtx_selector.h"
#include "source/block_reader.h"
#include "source/evt_windows.h"

namespace zanvik {
namespace {

namespace layout = evtx_layout;

// The options of the classic door that give the form.
void set_classic_options(evt_output_options& options, std::string_view form,
                         const timeline_options& wanted) {
  argument_list words{"zanvik", form == "l2t" ? "-csvl2t" : "-bodyfile"};
  if (wanted.slack) words.emplace_back("-inc_slack");
  if (wanted.event_time) words.emplace_back("-event_time");
  (void)options.parse_log_options(words, "", "");  // these words are sound
}

// Records by their heads, for what counts losses.
class record_heads : public chunk_visitor {
 public:
  void walk(std::span<std::byte> block, chunk_visitor& counter, const walk_settings& settings) {
    walk_settings heads = settings;
    heads.inside_records = false;
    // Searching behind damage changes sizes, which must not be seen by the walk to come.
    if (settings.inc_slack) copy_.assign(block.begin(), block.end());
    (void)walk_evtx_block(settings.inc_slack ? std::span(copy_) : block, 0, counter, heads);
  }

  void start_chunk(std::span<const std::byte>, std::uint64_t, std::uint64_t) override {}
  bool on_record(std::uint64_t) override { return true; }
  void on_slack_candidate(std::uint64_t, std::uint64_t) override {}

 private:
  std::vector<std::byte> copy_;
};

}  // namespace

bool is_timeline_form(std::string_view form) { return form == "l2t" || form == "bodyfile"; }

// Where the events of a block are that meet the conditions, by their offset in the log.
class timeline_logs::wanted_events : public event_sink {
 public:
  explicit wanted_events(const event_conditions& conditions)
      : filter_(conditions), evtx_(*this), evt_(*this) {}

  void on_event(const event_view& event) override {
    if (filter_.takes(event)) offsets_.push_back(event.header().file_offset);
  }

  void start_log(const log_source& source) {
    evtx_.set_source(source);
    evt_.set_source(source);
  }
  // Walking may change a block, so a copy is walked.
  void look_at(std::span<const std::byte> block, std::uint64_t offset,
               const walk_settings& settings) {
    offsets_.clear();
    copy_.assign(block.begin(), block.end());
    (void)walk_evtx_block(copy_, offset, evtx_, settings);
    std::sort(offsets_.begin(), offsets_.end());
  }
  void start_window(std::span<const std::byte> window) {
    evt_.set_buffer(0, window.data() + window.size());
  }
  // The record in hand is the only one that `has` knows then.
  void look_at(const evt_record& record) {
    offsets_.clear();
    evt_.on_record(record);
  }
  bool has(std::uint64_t offset) const {
    return std::binary_search(offsets_.begin(), offsets_.end(), offset);
  }

 private:
  event_filter filter_;
  evtx_event_reader evtx_;
  evt_event_reader evt_;
  std::vector<std::byte> copy_;
  std::vector<std::uint64_t> offsets_;
};

// Keeps the records that are among them.
class timeline_logs::wanted_records : public selection_sink {
 public:
  wanted_records(const wanted_events* wanted, selection_sink& keeping)
      : wanted_(wanted), keeping_(keeping) {}

  bool take(std::size_t command, record_fields& record) override {
    return (!wanted_ || wanted_->has(record.file_offset)) && keeping_.take(command, record);
  }
  bool take(std::size_t command, const evt_record& record) override {
    return (!wanted_ || wanted_->has(record.file_offset)) && keeping_.take(command, record);
  }

 private:
  const wanted_events* wanted_;
  selection_sink& keeping_;
};

// Looks at a legacy record before it is selected.
class timeline_logs::record_pair : public evt_sink {
 public:
  record_pair(wanted_events* wanted, evt_sink& selector) : wanted_(wanted), selector_(selector) {}
  void on_record(const evt_record& record) override {
    if (wanted_) wanted_->look_at(record);
    selector_.on_record(record);
  }

 private:
  wanted_events* wanted_;
  evt_sink& selector_;
};

timeline_logs::timeline_logs(std::string_view form, const event_conditions& conditions,
                             const timeline_options& options, const order_options& order)
    : by_time_(order.by_time(true)),
      lines_(options_.format, order.sorting, by_time_),
      reader_(options_.format) {
  set_classic_options(options_, form, options);
  if (conditions.any()) wanted_ = std::make_unique<wanted_events>(conditions);
}

timeline_logs::~timeline_logs() = default;

// By the first block of the log, which stands at `offset`.
void timeline_logs::classify(const found_log& log, std::span<const std::byte> block,
                             std::uint64_t offset, LogEntry& entry) {
  std::vector<std::byte> head(log_file::most_bytes);
  if (log.is_stream) {
    head = log.head;
    head.resize(offset);
    head.insert(
        head.end(), block.begin(),
        block.begin() + std::ssize(block.first(std::min(log_file::most_bytes, block.size()))));
  } else {
    const ssize_t got = read_fully(log, head, 0);
    head.resize(static_cast<std::size_t>(std::max<ssize_t>(got, 0)));
  }
  // A log that is none to the classic door has no channel.
  (void)classify_log(entry, log.source.path, channels_, [&](std::size_t count) {
    return std::span<const std::byte>(head).first(std::min(count, head.size()));
  });
}

void timeline_logs::hand_on(const LogEntry& entry) {
  const write_context context{.log = source_of(entry),
                              .inc_slack = options_.inc_slack,
                              .show_offsets = options_.show_offsets,
                              .allparams = options_.allparams,
                              .username = options_.username,
                              .hostname = options_.hostname,
                              .program_name = options_.program_name};
  if (!records_.empty()) lines_.add(records_.in_time_order(), context);
  records_.clear_records();
}

log_losses timeline_logs::read(const found_log& log,
                               const std::function<void(std::uint64_t)>& progress) {
  LogEntry entry;
  entry.path = log.source.path;
  const CommandSet set = listing_commands(options_, entry);
  command_refs commands;
  for (const auto& [path, command] : set) commands.add(command);
  plans_.drop_if_full();
  lines_.start_log();
  keeping_sink keeping(commands, records_, plans_);
  wanted_records wanted(wanted_.get(), keeping);
  if (wanted_) wanted_->start_log(log.source);
  return log.source.kind == log_kind::evt ? read_evt(log, entry, wanted, commands, progress)
                                          : read_evtx(log, entry, wanted, commands, progress);
}

log_losses timeline_logs::read_evtx(const found_log& log, LogEntry& entry, selection_sink& wanted,
                                    const command_refs& commands,
                                    const std::function<void(std::uint64_t)>& progress) {
  evtx_selector selector(commands, wanted);
  walk_settings settings;
  settings.inc_slack = options_.inc_slack;
  settings.reading = options_.reading;
  record_heads heads;
  loss_counter losses(heads);
  bool first = true;
  const auto take_block = [&](std::span<std::byte> block, std::uint64_t offset) {
    if (std::exchange(first, false)) classify(log, block, offset, entry);
    records_.start_block(block.size());
    losses.start_block(block);
    const std::uint64_t skip = first_chunk(block);
    const auto chunks = block.subspan(skip);
    if (wanted_) wanted_->look_at(chunks, offset + skip, settings);
    heads.walk(chunks, losses, settings);
    (void)walk_evtx_block(chunks, offset + skip, reader_, selector, settings);
    hand_on(entry);
    if (progress) progress(offset + block.size());
  };
  const bool whole = read_log_blocks(log, take_block);
  log_losses lost = losses.finish();
  lost.unread = !whole;
  return lost;
}

log_losses timeline_logs::read_evt(const found_log& log, LogEntry& entry, selection_sink& wanted,
                                   const command_refs& commands,
                                   const std::function<void(std::uint64_t)>& progress) {
  evt_selector selector(commands, wanted);
  record_pair pair(wanted_.get(), selector);
  bool first = true;
  const log_losses lost =
      walk_evt_windows(log, pair, [&](std::span<const std::byte> window, std::uint64_t offset) {
        if (std::exchange(first, false)) classify(log, window, offset, entry);
        // The log is a ring: one log's own order of time needs all of it.
        if (by_time_) hand_on(entry);
        if (wanted_) wanted_->start_window(window);
        if (progress) progress(offset + window.size());
      });
  hand_on(entry);
  return lost;
}

bool timeline_logs::finish(output_buffer& out) {
  return lines_.finish([&out](std::string_view line) {
    out.append(line);
    return !out.failed();
  }) || lines_.error().empty();
}

}  // namespace zanvik
