// Matches in the forms of export: an event a line, with the rule behind it.
//
// Trees (`jsonl`) get an object `rule`, flat objects members `sigma_rule_id` and so
// on (an event may have a datum RuleId), tables columns `rule_id`. Lines that have to wait, for the order of time or for a correlation, do so in a
// temporary file without a name.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "export/event_form.h"
#include "sigma/correlation.h"

namespace zanvik {

// The forms that matches can have.
std::vector<std::string> match_formats();

// Lines in a temporary file.
class line_store {
 public:
  struct place {
    std::uint64_t offset = 0;
    std::uint32_t size = 0;
  };
  line_store() = default;
  line_store(const line_store&) = delete;
  line_store& operator=(const line_store&) = delete;
  ~line_store();

  // Where a line can be written; `finish_line` says that it is.
  output_buffer& buffer();
  place finish_line();
  // False when the file could not be made, written or read.
  [[nodiscard]] bool read(place where, std::string& line);

 private:
  int file_ = -1;
  std::unique_ptr<output_buffer> buffer_;
  std::uint64_t written_ = 0;
};

class match_output {
 public:
  // `format` is one of match_formats(). All references must outlive this.
  match_output(std::string_view format, const form_options& options, const sigma::rule_set& set,
               bool in_time_order, output_buffer& out);

  void begin();
  void start_log(const log_source& log) { form_->start_log(log); }
  void write(const event_view& event, std::uint32_t rule);
  // Remembers an event; the number is what write_correlation wants.
  std::uint64_t keep(const event_view& event);
  void write_correlation(const sigma::correlation_match& match);
  // False when the temporary file could not be used.
  [[nodiscard]] bool end();

 private:
  struct waiting_line {
    std::uint64_t time;
    line_store::place where;
  };
  void append_tail(output_buffer& out, std::string_view tail) const;
  std::string correlation_tail(const sigma::correlation_match& match) const;

  const sigma::rule_set& set_;
  output_buffer& out_;
  std::unique_ptr<event_form> form_;
  const bool is_table_, is_tree_, in_time_order_;
  bool failed_ = false;
  std::vector<std::string> tails_;  // by rule: what stands behind an event
  line_store store_;
  std::vector<line_store::place> kept_;
  std::vector<waiting_line> waiting_;
};

}  // namespace zanvik
