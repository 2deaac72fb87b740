#include "select/evtx_selector.h"

#include <algorithm>
#include <utility>

#include "base/limits.h"
#include "base/text.h"

namespace zanvik {
namespace {

bool is_in_time(const ReportCommand& command, std::uint64_t time) {
  return time >= command.start_time && (command.stop_time == 0 || time <= command.stop_time);
}

}  // namespace

evtx_selector::evtx_selector(command_refs commands, selection_sink& sink)
    : commands_(std::move(commands)), sink_(sink) {
  tests_.reserve(commands_.size());
  for (const ReportCommand* command : commands_) add_command(*command);
  std::sort(by_event_id_.begin(), by_event_id_.end());
}

void evtx_selector::add_command(const ReportCommand& command) {
  const std::size_t number = tests_.size();
  if (command.event_id == any_event_id) {
    for_any_id_.push_back(number);
  } else {
    by_event_id_.emplace_back(command.event_id, number);
  }
  command_test test;
  test.first_condition = conditions_.size();
  for (const std::string& term : command.conditions) add_condition(term);
  if (!command.level_condition.empty()) add_condition(command.level_condition);
  test.last_condition = conditions_.size();
  if (!command.string_exists.empty()) test.search = add_search(command.string_exists);
  tests_.push_back(test);
}

void evtx_selector::add_condition(std::string_view term) {
  const auto bar = term.find('|');
  condition& added = conditions_.emplace_back();
  added.name = values_.add(term.substr(0, bar));
  added.has_needle = bar != std::string_view::npos;
  if (added.has_needle) added.needle = term.substr(bar + 1);
}

// Usually all commands have the run's text, so the previous one is the first to try.
std::size_t evtx_selector::add_search(const std::string& text) {
  if (searches_.empty() || searches_.back().search.text() != text) {
    searches_.push_back({text_search(text), 0, false});
  }
  return searches_.size();
}

void evtx_selector::on_record(record_fields& record) {
  ++record_count_;
  values_started_ = false;
  // The commands for its ID and those for any, together in the order of the set.
  const std::uint64_t id = record.event_id;
  auto own =
      std::lower_bound(by_event_id_.begin(), by_event_id_.end(), std::pair(id, std::size_t{0}));
  auto any = for_any_id_.begin();
  for (;;) {
    const bool more_own = own != by_event_id_.end() && own->first == id;
    const bool more_any = any != for_any_id_.end();
    if (!more_own && !more_any) return;
    const bool own_first = more_own && (!more_any || own->second < *any);
    const std::size_t command = own_first ? (own++)->second : *any++;
    if (!match_record(command, record)) continue;
    if (sink_.take(command, record)) return;  // a record is kept once
    forget_texts();
  }
}

// The record's values may have changed since commands read them.
void evtx_selector::forget_texts() {
  ++record_count_;
  values_started_ = false;
}

// What is still to be tested for a command and this event ID, cheap tests first: nothing is
// rendered for a record that fails by its time.
// rendered for a record that fails by its time.
bool evtx_selector::match_record(std::size_t command, const record_fields& record) {
  if (!is_in_time(commands_[command], record.time)) return false;
  const command_test& test = tests_[command];
  if (test.first_condition != test.last_condition && !values_started_) {
    values_.start_record(record);
    values_started_ = true;
  }
  for (std::size_t i = test.first_condition; i < test.last_condition; ++i) {
    if (!condition_holds(conditions_[i])) return false;
  }
  return test.search == 0 || search_holds(searches_[test.search - 1], record);
}

bool evtx_selector::condition_holds(condition& wanted) {
  constexpr std::size_t long_text = 1024;
  const auto text = values_.text(wanted.name);
  if (!text || !wanted.has_needle) return text.has_value();
  const std::uint64_t layout = text->size() > long_text ? values_.layout_of(wanted.name) : 0;
  if (layout == 0) return contains_nocase(*text, wanted.needle);
  // A literal may be megabytes long: it is searched once, not for each record.
  if (wanted.of_layouts.size() >= limits::cached_layouts) wanted.of_layouts.clear();
  const auto [answer, added] = wanted.of_layouts.try_emplace(layout, false);
  if (added) answer->second = contains_nocase(*text, wanted.needle);
  return answer->second;
}

bool evtx_selector::search_holds(shared_search& wanted, const record_fields& record) {
  if (wanted.record != record_count_) {
    wanted.record = record_count_;
    wanted.found = wanted.search.matches(record);
  }
  return wanted.found;
}

}  // namespace zanvik
