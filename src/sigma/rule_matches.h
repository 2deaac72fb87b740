// The matches: for each rule how often, when and in which logs; and tables of them for people.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "sigma/correlation.h"
#include "sigma/hunter.h"

namespace zanvik::sigma {

class rule_matches {
 public:
  explicit rule_matches(const rule_set& set) : set_(set), rules_(set.rules.size()) {}

  // A match of the rule with that number: the event's time and log.
  void add(std::size_t rule, std::uint64_t filetime, const std::string& log);
  std::uint64_t total() const { return total_; }
  std::uint64_t count_of(std::size_t rule) const { return rules_[rule].count; }

  // A table of the rules that matched, by level and title.
  void append_table(std::string& out) const;

 private:
  struct matches_of_rule {
    std::uint64_t count = 0;
    std::uint64_t first = UINT64_MAX, last = 0;  // FILETIME
    std::uint64_t logs = 0;
    std::vector<std::string> named_logs;  // the first few
    std::string last_log;
  };

  const rule_set& set_;
  std::vector<matches_of_rule> rules_;
  std::uint64_t total_ = 0;
};

// Every rule with its state and the reason if it does not run, one per line.
void append_rule_list(const rule_set& set, std::string& out);

// An event that a rule matches, with its data, for people.
void append_details(const event_view& event, const rule& matched, std::string& out);
// Only the event.
void append_event_details(const event_view& event, std::string& out);
// The same for a correlation's match; `completing_event` is the text of the event that made the
// condition true.
void append_details(const correlation_match& match, const rule& matched,
                    std::string_view completing_event, std::string& out);

// What was loaded, compiled and matched, and which channels no rule covered.
void append_hunt_stats(const rule_set& set, std::size_t compiled, const rule_matches& matches,
                       const hunt_counts& counts, std::string& out);

// "2017-12-26T13:10:29.1368791Z"
std::string time_text(std::uint64_t filetime);

}  // namespace zanvik::sigma
