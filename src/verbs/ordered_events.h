// Events of a form in the requested order: log by log as they are read, or all in one order of
// time.
//
// In one order of time, events whose lines show the same time are in the order of their logs;
// events of one log are ordered by their full time, then by position. So results of separate runs
// can be merged by what their lines show. Events wait as the bytes that the form makes of them.
//
// With `unique`, events with the same channel, computer, record number, time and values come out
// once, the first of them, with the number of copies.
#pragma once

#include <array>
#include <memory>
#include <string>

#include "export/event_form.h"
#include "export/form_program.h"
#include "verbs/line_sorter.h"
#include "verbs/order_options.h"

namespace zanvik {

// What makes two events the same: a hash of 128 bits with the secret of the run.
class event_identity {
 public:
  using value = std::array<std::uint64_t, 2>;
  value of(const event_view& event);

 private:
  form_programs programs_;
  std::string xml_;
  output_buffer out_{xml_};
};

class ordered_events {
 public:
  // `form` and `out` must outlive this.
  ordered_events(event_form& form, output_buffer& out, const order_options& options, bool by_time,
                 bool unique);

  void start_log() { ++log_; }
  void write(const event_view& event);
  // Writes the waiting events. False, with `error` set, if they could not be sorted.
  [[nodiscard]] bool finish();
  const std::string& error() const;

 private:
  event_form& form_;
  output_buffer& out_;
  std::uint64_t log_ = 0;
  std::unique_ptr<line_sorter> by_time_;
  event_identity identity_;
  std::string rendered_;
  output_buffer render_;
};

}  // namespace zanvik
