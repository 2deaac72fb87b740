// Matches as text: in a form of export, an event a line with the rule behind it, or for people.
//
// Trees (`jsonl`) get an object `rule`, flat objects members `sigma_rule_id` and so on (an event
// may have a datum RuleId), tables columns `rule_id`. Matches come as they are found, or in one
// order of time (ordered_events.h says which); those of correlations come last otherwise. Copies of
// an event that match the same rule may be written once, with their number. What correlations need
// of their events until the end waits in a temporary file.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "export/event_form.h"
#include "sigma/correlation.h"
#include "verbs/ordered_events.h"

namespace zanvik {

struct match_output_options {
  std::string_view format;  // one of match_formats(); empty: for people
  form_options form;
  bool by_time = false;  // always if `form.copies`
  sort_settings sorting;
};

// The forms that matches can have, and whether one is usually in the order of time.
std::vector<std::string> match_formats();
bool usually_by_time(std::string_view format);

class match_output {
 public:
  // `set` and `out` must outlive this.
  match_output(const match_output_options& options, const sigma::rule_set& set, output_buffer& out);

  void begin();
  void start_log(const log_source& log);
  void write(const event_view& event, std::uint32_t rule);
  // Remembers an event; the number is what write_correlation wants.
  std::uint64_t keep(const event_view& event);
  void write_correlation(const sigma::correlation_match& match);
  // Writes what waits.
  void end();
  // What went wrong, in words; empty when nothing did.
  const std::string& error() const { return error_; }
  // What makes an event the same as its copies; of no meaning unless copies are to be found.
  event_identity::value identity_of(const event_view& event);

 private:
  struct kept_line {
    std::uint64_t offset, bytes, log;
  };
  struct waiting_head;
  void render(const event_view& event);
  void add_tail(std::string_view tail);
  sort_key place_of(std::uint64_t filetime, std::uint64_t log) const;
  void put(const sort_key& place, const sort_key& identity, std::string_view tail,
           std::uint64_t copies);
  void add_copies(std::string& packed, std::uint64_t copies);
  std::string correlation_tail(const sigma::correlation_match& match) const;
  std::string correlation_cells(const sigma::correlation_match& match) const;

  const sigma::rule_set& set_;
  output_buffer& out_;
  const match_output_options options_;
  std::unique_ptr<event_form> form_;  // null: for people
  bool is_table_ = false, is_tree_ = false;
  bool correlates_ = false;         // a table has columns for correlations
  std::vector<std::string> tails_;  // by rule: what stands behind an event
  std::string line_, packed_;
  output_buffer rendered_{line_};
  std::uint64_t log_ = 0;
  temporary_file kept_file_;
  std::vector<kept_line> kept_;
  std::unique_ptr<line_sorter> by_time_;
  event_identity identity_;
  std::uint64_t correlation_matches_ = 0;
  std::string error_;
};

}  // namespace zanvik
