// The way into this folder, which writes whole events in forms that other tools read.
//
//   event_form.h    a form; each form is made in one file: json_form.cpp, xml_form.cpp ...
//   form_program.h  constant text and gaps, computed once for each shape of events
//   value_writer.h  a value in a gap; escaped_text.h text as a form needs it
//   line_text.h     texts by themselves, in lines that are not made of events
//   output_buffer.h where the bytes go
//
// In: event views. Out: a document of the form, well-formed whatever the events contain. To add a
// form, add a file and its row to the table in event_form.cpp.
#pragma once

#include <memory>
#include <span>
#include <string>
#include <string_view>

#include "events/event_view.h"
#include "export/output_buffer.h"

namespace zanvik {

struct form_options {
  bool raw_cells = false;  // csv: cells that a spreadsheet would run stay as they are
  bool copies = false;     // each event will get the number of its copies
};

class event_form {
 public:
  virtual ~event_form() = default;
  virtual void begin(output_buffer&) {}
  // Before the first event of a log.
  virtual void start_log(const log_source&) {}
  virtual void write(output_buffer& out, const event_view& event) = 0;
  virtual void end(output_buffer&) {}

  // A time as precise as an event's text shows it: the text does not distinguish events that are
  // equal in it. Rises with the FILETIME.
  virtual std::uint64_t shown_time(std::uint64_t filetime) const { return filetime; }
  // Inserts the number of copies into the text that `write` made of one event, if the form has a
  // place for it.
  virtual void add_copies(std::string& /*event*/, std::uint64_t /*copies*/) const {}
};

struct form_name {
  std::string_view name;
  std::string_view what;  // for the help
  std::unique_ptr<event_form> (*make)(const form_options&);
  bool by_time = false;  // in one order of time by default
};
// All forms; the first is the default.
std::span<const form_name> form_names();

// Inserts `text` before `end`, with which the event's text ends.
void put_before(std::string& event, std::string_view end, std::string_view text);

std::unique_ptr<event_form> make_json_form(const form_options&);
std::unique_ptr<event_form> make_xml_form(const form_options&);
std::unique_ptr<event_form> make_csv_form(const form_options&);
std::unique_ptr<event_form> make_timesketch_form(const form_options&);
std::unique_ptr<event_form> make_elastic_form(const form_options&);

}  // namespace zanvik
