// A typed value of any type and size, in each form.
#include <algorithm>

#include "events/cell_text.h"
#include "fuzz_target.h"

namespace zanvik::fuzz {
namespace {

bool holds_any(std::string_view text, std::string_view marks) {
  return text.find_first_of(marks) != std::string_view::npos;
}

}  // namespace

ZANVIK_FUZZ_TARGET(value) {
  input in(bytes);
  const auto type = in.take<std::uint16_t>();
  const auto size = in.take<std::uint16_t>();
  const exact_bytes block(in.rest());
  const raw_value value = raw_value_at(byte_cursor(block.span()), 0, type, size);
  value_writer writer;
  // No larger than the upper bound of the writer.
  const std::size_t bound = value_text_bound(value);
  const std::unique_ptr<char[]> buffer(new char[bound]);
  const auto text_to = [&](const char* end) {
    require(end >= buffer.get() && end <= buffer.get() + bound, "the text is within its bound");
    return std::string_view(buffer.get(), static_cast<std::size_t>(end - buffer.get()));
  };
  unsigned kinds = kind_plain;
  std::string appended;
  append_value_text(appended, value);
  require_equal(text_to(writer.write(buffer.get(), value, kinds)), appended,
                "written and appended agree");
  for (const cell_form form : {cell_form::all_data, cell_form::pulled}) {
    bool marked = false;
    const auto text = text_to(write_cell_text(writer, buffer.get(), value, form, marked));
    require(!holds_any(text, "\n"), "a cell's text is one line");
    require(marked || !holds_any(text, ",|\r\n"), "a text with a comma or a bar is marked");
  }
}

}  // namespace zanvik::fuzz
