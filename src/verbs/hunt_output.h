// Matches in the forms of export: an event a line, with the rule behind it.
//
// Trees (`jsonl`) get an object `rule`, flat objects members `rule_id` and so on, tables columns of
// these names. In time order, lines wait in a temporary file without a name until the end.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "export/event_form.h"
#include "sigma/rule_set.h"

namespace zanvik {

// The forms that matches can have.
std::vector<std::string> match_formats();

class match_output {
 public:
  // `format` is one of match_formats(). All references must outlive this.
  match_output(std::string_view format, const form_options& options, const sigma::rule_set& set,
               bool in_time_order, output_buffer& out);
  ~match_output();

  void begin();
  void start_log(const log_source& log) { form_->start_log(log); }
  void write(const event_view& event, std::uint32_t rule);
  // False when the temporary file could not be made, written or read.
  [[nodiscard]] bool end();

 private:
  struct line {
    std::uint64_t time, offset;
    std::uint32_t size;
  };
  void append_tail(output_buffer& out, std::string_view tail) const;
  [[nodiscard]] bool write_in_order();

  const sigma::rule_set& set_;
  output_buffer& out_;
  std::unique_ptr<event_form> form_;
  bool is_table_;
  std::vector<std::string> tails_;  // by rule: what stands behind an event

  int file_ = -1;  // of lines that wait
  std::unique_ptr<output_buffer> waiting_;
  std::vector<line> lines_;
  std::uint64_t written_ = 0;
};

}  // namespace zanvik
