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

// What all threads know of the form.
class match_form {
 public:
  // `set` must outlive this.
  match_form(const match_output_options& options, const sigma::rule_set& set);

  std::unique_ptr<event_form> make() const;  // null: for people
  const match_output_options& options() const { return options_; }
  const sigma::rule& rule_at(std::size_t rule) const { return set_.rules[rule].content; }
  bool is_text() const { return known_ == nullptr; }
  std::string header() const;  // of a table
  // What stands behind an event.
  const std::string& match_tail(std::size_t rule) const { return match_tails_[rule]; }
  std::string correlation_tail(const sigma::correlation_match& match) const;
  // Puts it there.
  void add_tail(std::string& event, std::string_view tail) const;

 private:
  std::string correlation_cells(const sigma::correlation_match& match) const;

  const sigma::rule_set& set_;
  const match_output_options options_;
  const form_name* known_ = nullptr;
  bool is_table_ = false, is_tree_ = false;
  bool correlates_ = false;  // a table has columns for correlations
  std::vector<std::string> tails_, match_tails_;  // by rule
};

// Makes the lines of matches. Belongs to one thread.
class match_lines {
 public:
  explicit match_lines(const match_form& form) : form_(form), events_(form.make()) {}

  void start_log(const log_source& log, std::uint64_t number);
  // The match as `match_output::write` wants it; its line is valid until the next call.
  struct line {
    sort_key place, identity;
    std::string_view text;
  };
  line of(const event_view& event, std::uint32_t rule);
  // The event alone, as `keep` wants it.
  std::string_view event_text(const event_view& event);
  // What makes an event the same as its copies; of no meaning unless copies are to be found.
  event_identity::value identity_of(const event_view& event);

 private:
  void render(const event_view& event);

  const match_form& form_;
  std::unique_ptr<event_form> events_;
  std::string line_, packed_;
  output_buffer rendered_{line_};
  std::uint64_t log_ = 0;
  event_identity identity_;
};

// Takes them, in the order of the logs.
class match_output {
 public:
  // Both must outlive this.
  match_output(const match_form& form, output_buffer& out);

  void begin();
  void write(const sort_key& place, const sort_key& identity, std::string_view line);
  // Remembers an event of the log with this number; the result is what write_correlation wants.
  std::uint64_t keep(std::string_view event, std::uint64_t log);
  void write_correlation(const sigma::correlation_match& match);
  // Writes what waits.
  void end();
  // What went wrong, in words; empty when nothing did.
  const std::string& error() const { return error_; }

 private:
  struct kept_line {
    std::uint64_t offset, bytes, log;
  };
  void add_copies(std::string& packed, std::uint64_t copies);

  const match_form& form_;
  output_buffer& out_;
  std::unique_ptr<event_form> events_;  // null: for people
  std::string line_, packed_;
  temporary_file kept_file_;
  std::vector<kept_line> kept_;
  std::unique_ptr<line_sorter> by_time_;
  std::uint64_t correlation_matches_ = 0;
  std::string error_;
};

}  // namespace zanvik
