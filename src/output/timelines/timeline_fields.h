// The list of a record's fields, "[name:value] [name:value]", as both timeline forms show it,
// written from a plan that is made once for a shape.
//
// A plan is text with gaps: fields with a literal value are in it whole, and each step adds a piece
// of that text followed by the next value of a record's block with its name before it. A field
// without a value is not shown. Plans hold views into their shapes.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "events/log_record.h"
#include "options/output_format.h"
#include "output/write_context.h"

namespace zanvik {

// How a field is shown in one of the forms.
struct field_style {
  std::array<char, 4> end{};  // after a value: "] " or "], "
  std::size_t end_size = 0;
  char separator_char = 0;  // replaced in names and values; 0 if there is none
  char separator_substitute = 0;
  std::string_view host_name;     // the field that gives the host; empty if not needed
  std::string_view channel_name;  // the field that gives the source type; the same
};

// The style of the form that `format` selects, and the fields for its other columns.
field_style field_style_of(const output_format& format, const write_context& context);

// A field that is needed for a separate column.
struct wanted_field {
  static constexpr std::size_t none = ~std::size_t{0};
  std::string_view literal;  // its value, unless it is
  std::size_t cell = none;   // otherwise the one in the record's block
};

struct field_step {
  std::uint32_t text_size = 0;  // of the text that is always written before the value
  std::uint32_t name_size = 0;  // of the text after it that is written only with the value
};

struct field_plan {
  // Readable bytes after the last text, so that a copy may run past its end.
  static constexpr std::size_t slack = 32;

  std::string text;  // of all steps, then `tail_size` bytes, then `slack`
  std::vector<field_step> steps;
  std::size_t tail_size = 0;
  std::size_t room = 0;        // bytes of the list without the values
  bool has_line_ends = false;  // in a name or a literal
  wanted_field host;
  wanted_field channel;
};

field_plan make_field_plan(const record_shape& shape, const field_style& style);

// The plans of the shapes met so far. If a crafted log makes them many, they are made again.
class field_plans {
 public:
  explicit field_plans(const field_style& style) : style_(style) {}

  // Valid until the next call.
  const field_plan& of(const record_shape& shape) {
    if (shape.id != last_shape_id_) find(shape);
    return *last_plan_;
  }

 private:
  static constexpr std::size_t most_plan_bytes = std::size_t{16} << 20;

  void find(const record_shape& shape);

  field_style style_;
  std::unordered_map<std::uint64_t, field_plan> plans_;  // by shape ID
  std::size_t plan_bytes_ = 0;
  std::uint64_t last_shape_id_ = 0;
  const field_plan* last_plan_ = nullptr;
};

// The values of the current record, read once.
class field_values {
 public:
  void read(const LogRecord& record);

  // The size of all of them.
  std::size_t total_bytes() const { return total_; }
  // The value of a needed field; empty if the record has none.
  std::string_view of(const wanted_field& wanted) const {
    return wanted.cell == wanted_field::none ? wanted.literal : cells_[wanted.cell].text;
  }

  // Writes the list of fields at `at`, which has room for the plan's `room`, all values, and the
  // slack of a row buffer. Returns its end. Sets `line_ends` if there is one in the list.
  char* put_list(char* at, const field_plan& plan, const field_style& style, bool& line_ends) const;

 private:
  std::vector<value_cell> cells_;
  std::size_t total_ = 0;
};

}  // namespace zanvik
