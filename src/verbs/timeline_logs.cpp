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
  void look_at(std::span<const std::byte> block, std::uint64_t offset, log_kind kind,
               const walk_settings& settings) {
    offsets_.clear();
    copy_.assign(block.begin(), block.end());
    if (kind == log_kind::evtx) {
      (void)walk_evtx_block(copy_, offset, evtx_, settings);
    } else {
      evt_.set_buffer(0, copy_.data() + copy_.size());
      (void)walk_evt_log(copy_, evt_);
    }
    std::sort(offsets_.begin(), offsets_.end());
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

timeline_logs::timeline_logs(std::string_view form, const event_conditions& conditions,
                             const timeline_options& options, const order_options& order)
    : lines_(options_.format, order.sorting, order.by_time(true)), reader_(options_.format) {
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

bool timeline_logs::read(const found_log& log, const std::function<void(std::uint64_t)>& progress) {
  LogEntry entry;
  entry.path = log.source.path;
  const CommandSet set = listing_commands(options_, entry);
  command_refs commands;
  for (const auto& [path, command] : set) commands.add(command);
  records_.start_log();
  plans_.drop_if_full();
  lines_.start_log();
  keeping_sink keeping(commands, records_, plans_);
  wanted_records wanted(wanted_.get(), keeping);
  evtx_selector selector(commands, wanted);
  evt_selector evt_selector(commands, wanted);
  walk_settings settings;
  settings.inc_slack = options_.inc_slack;
  settings.reading = options_.reading;
  if (wanted_) wanted_->start_log(log.source);

  bool first = true;
  const auto take_block = [&](std::span<std::byte> block, std::uint64_t offset) {
    if (std::exchange(first, false)) classify(log, block, offset, entry);
    records_.add_log_bytes(block.size());
    if (wanted_) wanted_->look_at(block, offset, log.source.kind, settings);
    if (log.source.kind == log_kind::evt) {
      (void)walk_evt_log(block, evt_selector);
    } else {
      (void)walk_evtx_block(block, offset, reader_, selector, settings);
    }
    hand_on(entry);
    if (progress) progress(offset + block.size());
  };
  return read_log_blocks(log, take_block);
}

bool timeline_logs::finish(output_buffer& out) {
  return lines_.finish([&out](std::string_view line) {
    out.append(line);
    return !out.failed();
  }) || lines_.error().empty();
}

}  // namespace zanvik
