// All rules of a run: read from files and folders, filtered, with the events of each one's log
// source, and the reason if it does not run.
//
// In: paths, the user's choice of rules, the table of log sources. Out: rules in the order of their
// paths, whatever the number of threads that read them. Bad input: a rule that cannot be used is
// kept with its reason; a broken file yields one message.
#pragma once

#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "base/hash_mix.h"
#include "sigma/log_sources.h"
#include "sigma/rule_reader.h"

namespace zanvik::sigma {

struct rule_choice {
  rule_level min_level = rule_level::none;
  std::vector<std::string> statuses;  // empty: any
  std::vector<std::string> excluded_ids;
  std::vector<std::string> tags;  // patterns with `*`; empty: any
  placeholder_values placeholders;
};

enum class rule_state : unsigned char {
  runs,
  not_applicable,  // its log source is none of Windows
  unsupported,     // needs what there is not
  broken,          // no sound rule
  not_wanted,      // left out by the user
};
std::string_view name_of(rule_state state);

struct known_rule {
  rule content;
  rule_state state = rule_state::runs;
  std::string reason;                // of a rule that does not run
  std::vector<event_source> events;  // of a detection that runs
  bool reported = true;              // false: only correlations want its matches
};

struct rule_set {
  std::vector<known_rule> rules;
  std::vector<std::string> messages;  // one line for each broken file or rule
  std::size_t files = 0;
  std::unordered_map<std::string, std::size_t, keyed_text_hash> by_name;  // IDs and names
  std::vector<std::size_t> correlation_order;  // each behind what it stands on

  // The rule with that ID or name, or -1.
  std::ptrdiff_t find(const std::string& id_or_name) const;

  // The detections that run.
  std::size_t running() const;
};

// Reads all rules below `paths`: files, and the `.yml` and `.yaml` files of folders in the order of
// their names. Returns an empty text, or what makes the run impossible.
std::string load_rules(const std::vector<std::string>& paths, const rule_choice& choice,
                       const log_source_table& sources, rule_set& out);

// The same for rules given as text, each named like a file; for tests.
void load_rule_texts(const std::vector<std::pair<std::string, std::string>>& texts,
                     const rule_choice& choice, const log_source_table& sources, rule_set& out);

}  // namespace zanvik::sigma
