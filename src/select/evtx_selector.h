// The sink that compares each decoded .evtx record with the commands of a log, in order, and passes
// it on with the first that selects it.
//
// Commands are found by the record's event ID, so others cost nothing; a value that several of them
// test is made into text once. Names and texts are looked up as in named_values.h and
// text_search.h. Tests compare the sink with the plain rule in tests/reference/.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

#include "commands/report_command.h"
#include "evtx/evtx.h"
#include "select/named_values.h"
#include "select/selection_sink.h"
#include "select/text_search.h"

namespace zanvik {

class evtx_selector : public record_sink {
 public:
  // The commands and the sink must outlive the selector.
  evtx_selector(command_refs commands, selection_sink& sink);

  void on_record(record_fields& record) override;

 private:
  struct condition {
    std::size_t name = 0;     // of `values_`
    bool has_needle = false;  // otherwise it is enough that the field exists
    std::string needle;
    std::unordered_map<std::uint64_t, bool> of_layouts;  // answers for long literals, by layout id
  };
  // A text that commands search for, and the answer for the current record.
  struct shared_search {
    text_search search;
    std::uint64_t record = 0;
    bool found = false;
  };
  struct command_test {
    std::size_t first_condition = 0;  // of `conditions_`
    std::size_t last_condition = 0;   // one past
    std::size_t search = 0;           // of `searches_`, counted from 1; 0 for none
  };

  void add_command(const ReportCommand& command);
  void add_condition(std::string_view term);
  std::size_t add_search(const std::string& text);
  bool match_record(std::size_t command, const record_fields& record);
  bool condition_holds(condition& wanted);
  bool search_holds(shared_search& wanted, const record_fields& record);
  void forget_texts();

  command_refs commands_;
  selection_sink& sink_;
  std::vector<std::pair<std::uint64_t, std::size_t>> by_event_id_;  // sorted by ID, then command
  std::vector<std::size_t> for_any_id_;                             // ascending
  std::vector<command_test> tests_;                                 // one for each command
  std::vector<condition> conditions_;
  std::vector<shared_search> searches_;
  named_values values_;
  std::uint64_t record_count_ = 0;  // records, and changes of their values
  bool values_started_ = false;     // for the current record
};

}  // namespace zanvik
