#include "verbs/hunt_worker.h"

#include <optional>
#include <span>
#include <utility>
#include <vector>

#include "base/stop_signal.h"

namespace zanvik {
namespace {

// A rule that an event matches.
struct found_match {
  std::uint32_t rule = 0;
  std::uint64_t time = 0;
  bool first_of_event = false;  // of those that correlations want
  sort_key place, identity;
  event_identity::value event{};
  std::size_t line_bytes = 0;   // of the text: the match's line,
  std::size_t event_bytes = 0;  // then the event, for correlations
  std::vector<std::optional<std::string>> values;
};

class hunt_result : public part_result {
 public:
  hunt_result(hunt_work& work, const log_part& part)
      : work_(work), number_(part.number), path_(part.log->source.path) {}

  void pass_on() override {
    std::string_view text = text_;
    for (const found_match& match : found_) {
      const std::string_view line = text.substr(0, match.line_bytes);
      const std::string_view event = text.substr(match.line_bytes, match.event_bytes);
      text.remove_prefix(match.line_bytes + match.event_bytes);
      pass_on(match, line, event);
    }
    work_.counts.add(counts, number_);
    counts = {};
    found_.clear();
    text_.clear();
    bytes_ = 0;
  }
  std::uint64_t waiting_bytes() const override { return bytes_ + text_.size(); }

  void add(found_match&& match, std::string_view line, std::string_view event) {
    match.line_bytes = line.size();
    match.event_bytes = event.size();
    text_.append(line).append(event);
    bytes_ += sizeof(match);
    for (const auto& value : match.values) bytes_ += sizeof(value) + (value ? value->size() : 0);
    found_.push_back(std::move(match));
  }

  sigma::hunt_counts counts;

 private:
  void pass_on(const found_match& match, std::string_view line, std::string_view event) {
    if (work_.set.rules[match.rule].reported) {
      work_.matches.add(match.rule, match.time, path_);
      if (work_.lines) work_.lines->write(match.place, match.identity, line);
    }
    sigma::correlator& correlator = work_.correlator;
    if (!correlator.wants(match.rule)) return;
    if (match.first_of_event) {
      correlator.begin_event(match.event);
      // One line serves all rules that match the event.
      note_.reset();
    }
    if (work_.lines && correlator.has_room()) {
      if (match.first_of_event) note_ = work_.lines->keep(event, number_);
    }
    correlator.add(match.rule, match.time, path_, match.values, note_.value_or(0));
  }

  hunt_work& work_;
  const std::uint64_t number_;  // of the log
  const std::string path_;
  std::vector<found_match> found_;
  std::string text_;
  std::uint64_t bytes_ = 0;  // of `found_`
  std::optional<std::uint64_t> note_;
};

class hunt_worker : public log_worker, public event_sink {
 public:
  explicit hunt_worker(hunt_work& work)
      : work_(work),
        filter_(work.logs.conditions),
        filtering_(work.logs.conditions.any()),
        hunter_(work.rules, [this](const event_view& event,
                                   std::span<const std::uint32_t> found) { take(event, found); }),
        reader_(*this, work.logs.slack) {
    if (work.form) lines_.emplace(*work.form);
    if (work.logs.conditions.event_ids) reader_.take_event_ids(&*work.logs.conditions.event_ids);
    reader_.on_progress = [this](std::uint64_t bytes) { turn_->show_progress(bytes); };
  }

  std::unique_ptr<part_result> read(log_part& part, part_turn& turn) override {
    auto result = std::make_unique<hunt_result>(work_, part);
    result_ = result.get();
    turn_ = &turn;
    if (lines_) lines_->start_log(part.log->source, part.number);
    hunter_.start_part();
    result->lost = reader_.read(part);
    result->counts = hunter_.counts();
    result->cut_short = !part.is_block && stop_signal() != 0;
    return result;
  }

  void on_event(const event_view& event) override {
    if (!filtering_ || filter_.takes(event)) hunter_.on_event(event);
  }

 private:
  void take(const event_view& event, std::span<const std::uint32_t> found) {
    bool first = true;
    for (const std::uint32_t rule : found) {
      found_match match;
      match.rule = rule;
      match.time = event.time();
      match_lines::line line;
      if (lines_ && work_.set.rules[rule].reported) {
        line = lines_->of(event, rule);
        match.place = line.place;
        match.identity = line.identity;
      }
      line_ = line.text;
      std::string_view whole;
      if (work_.correlator.wants(rule)) {
        match.first_of_event = std::exchange(first, false);
        match.values = work_.correlator.values_of(event, rule);
        if (lines_ && match.first_of_event) {
          match.event = lines_->identity_of(event);
          whole = lines_->event_text(event);
        }
      }
      result_->add(std::move(match), line_, whole);
      if (turn_->has_come(result_->waiting_bytes())) result_->pass_on();
    }
  }

  hunt_work& work_;
  event_filter filter_;
  const bool filtering_;
  sigma::hunter hunter_;
  log_event_reader reader_;
  std::optional<match_lines> lines_;
  std::string line_;
  hunt_result* result_ = nullptr;
  part_turn* turn_ = nullptr;
};

}  // namespace

std::unique_ptr<log_worker> make_hunt_worker(hunt_work& work) {
  return std::make_unique<hunt_worker>(work);
}

}  // namespace zanvik
