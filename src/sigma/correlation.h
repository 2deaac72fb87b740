// What rules match together: correlations over the matches of a whole run.
//
// In: each event matched by a rule that some correlation uses, in any order. Out, at the end: the
// matches of the correlations, each with its events. Matches are kept until then, within a limit;
// more are counted and left out.
//
// Matches of one group (equal values of the group-by fields, in any case) are ordered by time,
// those with the same time by arrival. An event without one of the group-by fields belongs to no
// group. Copies of an event can count as one. correlation_spans.h says where a condition holds.
#pragma once

#include <array>
#include <cstdint>
#include <map>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

#include "base/hash_mix.h"
#include "events/event_view.h"
#include "sigma/correlation_spans.h"
#include "sigma/rule_set.h"

namespace zanvik::sigma {

// An event that a rule matched, as a correlation remembers it.
struct remembered_event {
  std::uint64_t time = 0;    // FILETIME
  std::uint64_t note = 0;    // the caller's own
  std::uint64_t copies = 1;  // in the input, if they are counted
  std::uint32_t event = 0;   // number of the event
  std::uint32_t log = 0;     // number of its path
  std::uint32_t rule = 0;    // that matched it
  std::uint32_t values = 0;  // where its fields' values begin
};

struct correlation_match {
  std::size_t rule = 0;
  remembered_event event;  // with which the condition came to hold
  std::uint64_t first = 0, last = 0;
  std::uint64_t events = 0;
  std::vector<std::pair<std::string, std::string>> group;
};

class correlator {
 public:
  // What copies of an event share.
  using event_identity = std::array<std::uint64_t, 2>;

  // `set` must outlive this.
  explicit correlator(const rule_set& set);

  // Whether some correlation uses the rule.
  bool wants(std::size_t rule) const { return bases_[rule]; }
  // Whether there is room for another match.
  bool has_room() const;
  // Says that the following matches are of the next event. Events with the same identity are one,
  // unless it is 0.
  void begin_event(const event_identity& identity = {}) {
    ++event_;
    identity_ = identity;
  }
  // What correlations need of an event that such a rule matches: its values for the fields that they
  // ask for, in order. For any thread, beside `add`.
  std::vector<std::optional<std::string>> values_of(const event_view& event, std::size_t rule) const;
  // A match of such a rule with these values, in an event of this time and log; `note` is returned
  // with the correlation's match. Without room, it is counted and left out.
  void add(std::size_t rule, std::uint64_t time, const std::string& log,
           std::span<const std::optional<std::string>> values, std::uint64_t note);
  void add(const event_view& event, std::size_t rule, std::uint64_t note) {
    add(rule, event.time(), event.source().path, values_of(event, rule), note);
  }

  // All matches of the reported correlations, by rule and time.
  std::vector<correlation_match> finish();
  // Matches that were left out because there were too many.
  std::uint64_t left_out() const { return left_out_; }
  // Correlations that were not evaluated because they had too many matches.
  const std::vector<std::size_t>& not_worked_out() const { return not_worked_out_; }
  const std::string& log_path(std::uint32_t log) const { return logs_[log]; }

 private:
  class tuple_numbers;
  void need(std::size_t rule, const std::string& field, unsigned depth);
  std::uint32_t intern(std::string_view text);
  std::uint32_t value_of(const remembered_event& event, std::string_view field) const;
  std::vector<std::uint32_t> kept_values(const remembered_event& event,
                                         const std::vector<std::string>& fields) const;
  void drop_copies();
  bool add_hits(std::size_t rule, tuple_numbers& groups, tuple_numbers& counted,
                std::vector<correlation_hit>& hits, std::vector<remembered_event>& events);
  void find_matches(std::size_t rule);

  const rule_set& set_;
  std::vector<bool> bases_;                       // by rule
  std::vector<std::vector<std::string>> fields_;  // by rule: what correlations ask of its events
  std::map<std::size_t, std::vector<remembered_event>> events_;  // by rule
  std::size_t held_ = 0;
  std::uint32_t event_ = 0;
  event_identity identity_{};
  std::map<std::size_t, std::vector<event_identity>> identities_;  // by rule, as `events_`
  std::vector<std::uint32_t> values_;  // numbers in `texts_`; 0 for an absent one
  std::vector<std::string> texts_{""};
  std::unordered_map<std::string, std::uint32_t, keyed_text_hash, std::equal_to<>> numbers_;
  std::size_t text_bytes_ = 0;
  std::vector<std::string> logs_;
  std::uint64_t left_out_ = 0;
  std::size_t looks_ = 0;
  std::vector<std::size_t> not_worked_out_;
  std::map<std::size_t, std::vector<correlation_match>> matches_;  // by correlation
};

}  // namespace zanvik::sigma
