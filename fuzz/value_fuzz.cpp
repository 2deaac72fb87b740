// A typed value of any type and size, in each form.
#include <algorithm>

#include "evtx/values/value_text.h"
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
  for (const value_form form : {value_form::plain, value_form::all_data, value_form::pulled}) {
    // No larger than the writer says that it may need.
    const std::size_t bound = value_text_bound(value);
    const std::unique_ptr<char[]> buffer(new char[bound]);
    bool marked = false;
    const char* end = writer.write(buffer.get(), value, form, marked);
    require(end >= buffer.get() && end <= buffer.get() + bound, "the text is within its bound");
    const std::string_view text(buffer.get(), static_cast<std::size_t>(end - buffer.get()));
    std::string appended;
    append_value_text(appended, value, form);
    require_equal(text, appended, "written and appended agree");
    if (form == value_form::plain) continue;
    require(!holds_any(text, "\n"), "a column's text is one line");
    require(marked || !holds_any(text, ",|\r\n"), "a text with a comma or a bar is marked");
  }
}

}  // namespace zanvik::fuzz
