// The table of log sources: which events each `logsource` of a rule stands for.
//
// log_sources.yml describes its format and is built into the program; a file of the user's adds to
// it. Pointers into the table are valid until it is changed.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "sigma/rule.h"

namespace zanvik::sigma {

// Events of one kind that a log source stands for. Empty members are ignored.
struct event_source {
  std::vector<std::string> channels;   // folded
  std::vector<std::string> providers;  // folded
  std::vector<std::uint32_t> event_ids;
  std::vector<field_test> where;                            // what fields are asked for
  expression condition;                                     // over these tests; must hold
  std::vector<std::pair<std::string, std::string>> fields;  // of the rule, of the event

  // The name of a rule's field in these events.
  std::string_view field_name(std::string_view rule_field) const;
};

// Whether an event of this channel, provider (both folded) and ID is one of `source`, apart from
// its `where`.
bool concerns(const event_source& source, std::string_view channel, std::string_view provider,
              std::optional<std::uint32_t> event_id);
// The event's ID as a number.
std::optional<std::uint32_t> event_id_of(std::string_view text);

struct log_source_entry {
  rule_log_source source;
  std::vector<event_source> events;
  std::string reason;  // why there are no events
};

class log_source_table {
 public:
  // The built-in table.
  log_source_table();

  // Adds the entries of another table; they replace those of the same source. Returns an empty
  // text, or what is wrong, and then `line` is set and nothing has changed.
  std::string add(const std::string& yaml, std::size_t& line);

  // The events that a rule's log source stands for; if there are none, `reason` says why.
  std::vector<event_source> find(const rule_log_source& source, std::string& reason) const;

 private:
  std::vector<log_source_entry> entries_;
};

}  // namespace zanvik::sigma
