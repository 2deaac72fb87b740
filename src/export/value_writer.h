// Values of events into an output buffer, in the ways that forms need.
#pragma once

#include <cstring>
#include <string_view>

#include "events/event_value.h"
#include "export/escaped_text.h"
#include "export/output_buffer.h"

namespace zanvik {

class value_sink {
 public:
  // `lossy` is set if a character cannot be held.
  value_sink(output_buffer& out, const std::byte* readable_end, bool& lossy)
      : out_(out), readable_end_(readable_end), lossy_(lossy) {}

  // See `gap` for what these write.
  void json_value(const event_value& value);
  void json_datum(const event_value& value);
  void json_items(const event_value& value);
  void json_number(const event_value& value);
  void json_text_items(const event_value& value);
  // Text at the start of a cell, behind a `'` if a spreadsheet would run it; returns whether there
  // was any.
  bool csv_formula_text(const event_value& value);
  void xml_element(const event_value& value, std::string_view close);
  void xml_repeated(const event_value& value, std::string_view open, std::string_view close);

  // The text of any value; items of an array with ", " between. Returns whether there was any.
  template <escape_form form>
  bool text(const event_value& value);

 private:
  // Longest piece of a text that is written at once; even.
  static constexpr std::size_t piece_bytes = 64 << 10;

  template <escape_form form>
  bool wide_text(std::span<const std::byte> text);
  template <escape_form form>
  bool ansi_text(std::span<const std::byte> text);
  template <escape_form form>
  bool utf8_text(std::string_view text);
  template <escape_form form>
  bool array_text(const event_value& value);
  bool plain(const event_value& value);
  // The first character of the text if that is ASCII, else 0.
  static char first_character(const event_value& value);
  static constexpr std::size_t plain_number_bound = 96;
  void put(char c) {
    char* at = out_.room(1);
    *at = c;
    out_.commit(at + 1);
  }

  output_buffer& out_;
  const std::byte* readable_end_;
  bool& lossy_;
};

}  // namespace zanvik
