// `ReportCommand`: a selection of records, and what to do with those that pass. A plain listing
// makes one for each event ID; report lines and command files make theirs through the command
// language. A `CommandSet` has the commands of a run by the log they are for.
#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>
#include <map>
#include <string>
#include <vector>

#include "commands/command_translate.h"

namespace zanvik {

// An event ID of all ones means any.
inline constexpr std::uint64_t any_event_id = std::numeric_limits<std::uint64_t>::max();

struct ReportCommand {
  std::int32_t index = -1;  // position of the line in its list
  std::uint64_t event_id = any_event_id;
  std::vector<std::string> conditions;  // "field|substring" or "field"; all must be true
  std::string name;                     // caption shown with each record
  std::string log_path;                 // the log it is for, as it was named
  std::string type_filter;              // text that the channel of its log must contain
  std::uint32_t record_base = 0;        // stays 0
  std::string string_exists;            // a text that some value must contain
  std::string level_condition;          // one more condition, of the same form
  std::uint64_t start_time = 0;         // FILETIME, inclusive
  std::uint64_t stop_time = std::numeric_limits<std::uint64_t>::max();  // inclusive; 0 means none
  bool emit = true;                // keep matching records for output
  bool all_data = false;           // every field is a column
  bool skip_system_fields = true;  // except the first "EventID" and "SystemTime"
  bool is_evt = false;
  std::vector<std::string> pull;  // fields that are columns, in the order named
  std::map<std::string, std::string> translate_terms;  // by field, as written
  std::map<std::string, translate_spec> translators;   // the readable ones of them
  // Names of a legacy record's strings by their number; stays empty, but is searched.
  std::map<std::uint16_t, std::string> param_labels;
  bool event_lookup = false;  // `-event_lookup`, without effect
  bool has_hist = false;
  std::vector<std::string> hist_fields;
  std::vector<std::string> hist_fields_lower;
  std::int32_t hist_index = 0;
};

// Commands by lower-cased log path (for a plain listing by the path as given); equal keys in order
// of insertion.
using CommandSet = std::multimap<std::string, ReportCommand>;

// The commands for one log, in order and in place: a command file may contain a million.
class command_refs {
 public:
  command_refs() = default;
  // All of `commands`, which have to outlive this.
  command_refs(const std::vector<ReportCommand>& commands) {
    for (const ReportCommand& command : commands) add(command);
  }
  void add(const ReportCommand& command) { commands_.push_back(&command); }
  std::size_t size() const { return commands_.size(); }
  const ReportCommand& operator[](std::size_t i) const { return *commands_[i]; }
  auto begin() const { return commands_.begin(); }  // of pointers
  auto end() const { return commands_.end(); }

 private:
  std::vector<const ReportCommand*> commands_;
};

}  // namespace zanvik
