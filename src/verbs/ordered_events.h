// Events of a form in one order of time over all logs.
//
// Events whose lines show the same time are in the order of their logs;
// events of one log are ordered by their full time, then by position. So results of separate runs
// can be merged by what their lines show. Events wait as the bytes that the form makes of them.
//
// With `unique`, events with the same channel, computer, record number, time and values come out
// once, the first of them, with the number of copies.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "export/event_form.h"
#include "export/form_program.h"
#include "verbs/line_sorter.h"

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

// A line of an event in one order of time, as a worker makes it.
class timed_lines {
 public:
  void add(const sort_key& place, const sort_key& identity, std::string_view line);
  void hand_on(line_sorter& sorter);
  std::uint64_t bytes() const { return text_.size() + lines_.size() * sizeof(timed_line); }

 private:
  struct timed_line {
    sort_key place, identity;
    std::size_t bytes;
  };
  std::vector<timed_line> lines_;
  std::string text_;
};

// Makes the lines. Belongs to one thread.
class timed_line_maker {
 public:
  // `form` must outlive this.
  timed_line_maker(event_form& form, bool unique) : form_(form), unique_(unique) {}

  void make(const event_view& event, std::uint64_t log, timed_lines& out);

 private:
  event_form& form_;
  const bool unique_;
  event_identity identity_;
  std::string rendered_;
  output_buffer render_{rendered_};
};

// Writes the lines in order, those of copies with their number. False if they could not be sorted.
[[nodiscard]] bool write_lines(line_sorter& sorter, const event_form& form, output_buffer& out);

}  // namespace zanvik
