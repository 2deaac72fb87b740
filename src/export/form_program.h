// What a form writes for all events of one shape: constant text, already as the form needs it, with
// gaps between for an event's own values.
//
// A form builds the program from the tree of the shape, once; writing an event is then a walk over
// the steps. A gap names a slot and how its value is written; the type is that of the value.
#pragma once

#include <algorithm>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "base/limits.h"
#include "events/event_view.h"
#include "export/escaped_text.h"
#include "export/output_buffer.h"

namespace zanvik {

enum class gap : std::uint8_t {
  none,             // only constant text
  json_value,       // with its type: 12, "text", true, null, ["a","b"]
  json_datum,       // the same, and an array of one item is that item
  json_items,       // the same for each item of an array, each followed by a comma
  json_list_end,    // removes a comma; no slot
  json_text,        // its text, inside quotes that are there
  json_line,        // the same in one line
  json_number,      // a whole or broken number, else null
  json_text_items,  // its text, or the text of each item, in quotes and followed by a comma
  xml_content,      // its text
  xml_element,      // the rest of an element: `>` and its text and the end tag, or `/>`
  xml_repeated,     // an element for each item of an array
  xml_attribute,    // its text, inside quotes that are there
  csv_start,        // the quote that begins a cell, a `'` if its text would be a formula, the text
  csv_text,         // its text, inside quotes that are there
  csv_guard,        // a `'` if the cell is empty so far: constant text follows; no slot
  level_name,       // "error"
  keyword_names,    // "Audit Success", and so on, in quotes and with commas between
  // Of the event, not of a slot:
  record_number,
  file_offset,
  written,      // ISO time
  time,         // the event's own time, the same way
  time_offset,  // with six digits and +00:00
  unix_microseconds,
  xml_string,     // the event's XML inside JSON quotes; the program is in `set_xml`
  log_path,       // as the form has prepared it (form_context)
  json_oddities,  // ,"slack":true and so on
  csv_oddities,   // if there are any: `open`, "zanvik: slack" and so on, `close`
  xml_oddities,   // the same as attributes, as far as they are known before the event
};

// "error"; "information" for what has no name.
std::string_view level_text(const event_value& level);
// "Audit Success" and so on, in quotes and with commas between.
std::string keyword_texts(const event_value& keywords);

// The texts of a step are in the pool, one behind the other.
struct form_step {
  std::uint32_t text = 0;         // where they begin
  std::uint32_t text_bytes = 0;   // of the constant text before the gap
  std::uint32_t open_bytes = 0;   // of xml_repeated: the start tag without its `>`
  std::uint32_t close_bytes = 0;  // of xml_element and xml_repeated: the end tag
  std::int32_t slot = -1;
  gap how = gap::none;
};

class form_program {
 public:
  void text(std::string_view constant) { pending_.append(constant); }
  // `text`, escaped; a loss counts for each event.
  void escaped(std::string_view text, escape_form form) {
    append_escaped(pending_, text, form, lossy_);
  }
  void add(gap how, std::int32_t slot = -1, std::string_view open = {},
           std::string_view close = {});
  // The program is valid for the current event only.
  void set_once() { once_ = true; }
  bool once() const { return once_; }
  // What the gap xml_string writes.
  void set_xml(std::shared_ptr<const form_program> xml) { xml_ = std::move(xml); }
  void set_lossy(bool lossy) { lossy_ = lossy_ || lossy; }
  void finish();
  // Approximate size in memory.
  std::size_t bytes() const {
    return pool_.size() + steps_.size() * sizeof(form_step) + (xml_ ? xml_->bytes() : 0);
  }

  // Writes the event. `log` is the path as the form needs it. Returns whether anything was lost.
  bool write(output_buffer& out, const event_view& event, std::string_view log,
             bool log_lossy) const;

 private:
  class writer;

  std::vector<form_step> steps_;
  std::string pool_;
  std::string pending_;
  std::size_t room_ = 0;  // that all steps may take, but for values that are not quick
  bool lossy_ = false;
  bool once_ = false;
  std::shared_ptr<const form_program> xml_;
};

// The programs of one form, by shape.
class form_programs {
 public:
  // The program of the event's shape; `build` fills a new one.
  template <typename F>
  const form_program& of(const event_view& event, F&& build) {
    if (event.shape_index() >= known_.size()) known_.resize(event.shape_index() + 1);
    known* entry = &known_[event.shape_index()];
    if (entry->shape != event.shape_id() || entry->program.once()) {
      if (held_bytes_ > limits::cached_program_bytes) entry = &start_anew(event.shape_index());
      held_bytes_ -= std::min(held_bytes_, entry->program.bytes());
      entry->program = {};
      build(entry->program);
      entry->program.finish();
      entry->shape = event.shape_id();
      held_bytes_ += entry->program.bytes();
    }
    return entry->program;
  }

 private:
  struct known {
    std::uint64_t shape = 0;
    form_program program;
  };
  known& start_anew(std::uint32_t index) {
    known_ = std::vector<known>(index + 1);
    held_bytes_ = 0;
    return known_[index];
  }

  std::vector<known> known_;
  std::size_t held_bytes_ = 0;
};

}  // namespace zanvik
