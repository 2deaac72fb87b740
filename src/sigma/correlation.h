// What rules match together: correlations over the matches of a whole run.
//
// In: each match of a rule that some correlation stands on, in any order. Out, at the end: the
// matches of the correlations, each with the events it spans. Matches are held until then, within a
// limit; what goes beyond it is counted and left out.
//
// Matches of one group (equal values of the group-by fields, in any case) are taken by time. A
// window begins with a match and lasts for the timespan; those that lie within another one do not
// count. Windows in which the condition holds and that overlap are one match of the correlation.
// An event without one of the group-by fields belongs to no group.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

#include "events/event_view.h"
#include "sigma/rule_set.h"

namespace zanvik::sigma {

// An event that a rule matched, as a correlation remembers it.
struct remembered_event {
  std::uint64_t time = 0;  // FILETIME
  std::uint64_t note = 0;  // the caller's own
  std::uint32_t log = 0;   // number of its path
  std::uint32_t rule = 0;
  std::uint32_t values = 0;  // where its fields' values begin
};

struct correlation_match {
  std::size_t rule = 0;
  remembered_event event;  // with which the condition came to hold
  std::uint64_t first = 0, last = 0;
  std::uint64_t events = 0;  // matches of the rules it stands on
  std::vector<std::pair<std::string, std::string>> group;
};

class correlator {
 public:
  // `set` must outlive this.
  explicit correlator(const rule_set& set);

  // Whether some correlation stands on the rule.
  bool wants(std::size_t rule) const { return !fields_[rule].empty() || bases_[rule]; }
  // A match of such a rule; `note` comes back with the correlation's match.
  void add(const event_view& event, std::size_t rule, std::uint64_t note);

  // All matches of the correlations that are reported, by rule and time.
  std::vector<correlation_match> finish();
  // Matches that were left out because there were too many.
  std::uint64_t left_out() const { return left_out_; }
  const std::string& log_path(std::uint32_t log) const { return logs_[log]; }

 private:
  struct hit;
  void need(std::size_t rule, const std::string& field, unsigned depth);
  std::uint32_t intern(std::string_view text);
  std::uint32_t value_of(const remembered_event& event, std::string_view field) const;
  std::vector<hit> hits_of(std::size_t rule) const;
  void find_matches(std::size_t rule, std::vector<hit>& hits);
  void find_in_group(std::size_t rule, const std::vector<hit>& hits);

  const rule_set& set_;
  std::vector<bool> bases_;                       // by rule
  std::vector<std::vector<std::string>> fields_;  // by rule: what correlations ask of its events
  std::vector<remembered_event> events_;
  std::vector<std::uint32_t> values_;  // numbers in `texts_`; 0 for an absent one
  std::vector<std::string> texts_{""};
  std::unordered_map<std::string, std::uint32_t> numbers_;
  std::size_t text_bytes_ = 0;
  std::vector<std::string> logs_;
  std::uint64_t left_out_ = 0;
  std::map<std::size_t, std::vector<correlation_match>> matches_;  // by correlation
};

}  // namespace zanvik::sigma
