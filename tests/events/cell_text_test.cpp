// Values on one line, as cells have them.
#include "events/cell_text.h"

#include <gtest/gtest.h>

#include <string>

#include "value_builder.h"

namespace zanvik::testing {
namespace {

struct cell {
  std::string text;
  bool marked = false;
  bool operator==(const cell&) const = default;
};

std::ostream& operator<<(std::ostream& out, const cell& shown) {
  return out << shown.text << (shown.marked ? " (marked)" : "");
}

cell cell_of(const slot_value& value, cell_form form) {
  const raw_value raw = raw_value_at(byte_cursor(value.bytes), 0, value.type,
                                     static_cast<std::uint16_t>(value.bytes.size()));
  std::string text(value_text_bound(raw), '?');
  value_writer writer;
  bool marked = false;
  text.resize(static_cast<std::size_t>(write_cell_text(writer, text.data(), raw, form, marked) -
                                       text.data()));
  return {text, marked};
}

TEST(cell_text, free_text_is_cleaned_and_marked) {
  byte_vector runs = bytes_of({1});
  append_utf16(runs, "Disk");
  append_bytes(runs, bytes_of({0xff, 0xff}));
  append_utf16(runs, "a, b|c");
  // Longer than what is looked at in one step, with line ends on both sides of the border.
  const std::string lines = "fifteen letters\r\nand\tmore lines\n, a comma, and the rest";
  const std::tuple<const char*, slot_value, cell, cell> rows[] = {
      {"line ends and tabs", slot::utf16("\na\r\n\tb\n"), {"a:b:"}, {",a,b,", true}},
      {"one leading colon goes", slot::utf16("::a"), {":a"}, {"::a"}},
      {"an empty text", slot::utf16(""), {""}, {""}},
      {"a bar", slot::utf16("a|b"), {"a|b", true}, {"a|b", true}},
      {"a long text with a comma",
       slot::utf16(lines),
       {"fifteen letters:andmore lines:, a comma, and the rest", true},
       {"fifteen letters,andmore lines,, a comma, and the rest", true}},
      {"runs in a binary value",
       slot::binary(runs),
       {"Disk a, b|c ", true},
       {"Disk, a, b|c, ", true}},
      {"a number", slot::uint16(4624), {"4624"}, {"4624"}},
  };
  for (const auto& [reason, value, all_data, pulled] : rows) {
    EXPECT_EQ(cell_of(value, cell_form::all_data), all_data) << reason;
    EXPECT_EQ(cell_of(value, cell_form::pulled), pulled) << reason;
  }
}

}  // namespace
}  // namespace zanvik::testing
