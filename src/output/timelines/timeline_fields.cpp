#include "output/timelines/timeline_fields.h"

#include <cstring>

#include "output/row_buffer.h"
#include "output/short_copy.h"

namespace zanvik {
namespace {

constexpr std::size_t stride = short_copy_bytes;
static_assert(field_plan::slack >= stride);
static_assert(row_buffer::slack >= stride && record_arena::slack >= stride);

bool is_line_end(char c) { return c == '\r' || c == '\n'; }

// Copies a value with any content; returns whether it contains a line end. Commas are replaced
// first, whatever the separator is.
bool put_cleaned(char* at, std::string_view value, const field_style& style) {
  const bool replaces = style.separator_char != 0;
  const char separator = replaces ? style.separator_char : ',';
  const char substitute = replaces ? style.separator_substitute : ';';
  unsigned char line_ends = 0;
  for (std::size_t i = 0; i < value.size(); ++i) {
    const char c = value[i];
    const char plain = c == ',' ? ';' : c;
    at[i] = plain == separator ? substitute : plain;
    line_ends |= static_cast<unsigned char>((c == '\r') | (c == '\n'));
  }
  return line_ends != 0;
}

class field_planner {
 public:
  explicit field_planner(const field_style& style) : style_(style) {}

  void add(const shape_column& column);
  field_plan finish();

 private:
  void add_name(std::string_view name);
  void add_literal(std::string_view value);

  const field_style& style_;
  field_plan plan_;
  std::size_t planned_text_ = 0;  // how much of the text the steps use
};

void field_planner::add(const shape_column& column) {
  wanted_field source{{}, plan_.steps.size()};
  if (column.literal) source = {column.text, wanted_field::none};
  // Fields without a name are never needed for a column.
  if (!column.name.empty() && column.name == style_.host_name) plan_.host = source;
  if (!column.name.empty() && column.name == style_.channel_name) plan_.channel = source;
  if (column.literal) {
    if (column.text.empty()) return;
    add_name(column.name);
    add_literal(column.text);
    return;
  }
  const std::size_t name_begin = plan_.text.size();
  add_name(column.name);
  plan_.steps.push_back({static_cast<std::uint32_t>(name_begin - planned_text_),
                         static_cast<std::uint32_t>(plan_.text.size() - name_begin)});
  planned_text_ = plan_.text.size();
}

// Only the separator is replaced in a name; its commas stay if that is another character.
void field_planner::add_name(std::string_view name) {
  plan_.text += '[';
  for (const char c : name) {
    plan_.text += c == style_.separator_char && c != 0 ? style_.separator_substitute : c;
    plan_.has_line_ends |= is_line_end(c);
  }
  plan_.text += ':';
}

void field_planner::add_literal(std::string_view value) {
  const std::size_t begin = plan_.text.size();
  plan_.text.resize(begin + value.size());
  plan_.has_line_ends |= put_cleaned(plan_.text.data() + begin, value, style_);
  plan_.text.append(style_.end.data(), style_.end_size);
}

field_plan field_planner::finish() {
  plan_.tail_size = plan_.text.size() - planned_text_;
  plan_.room = plan_.text.size() + plan_.steps.size() * style_.end_size;
  plan_.text.append(field_plan::slack, '\0');
  return std::move(plan_);
}

}  // namespace

field_style field_style_of(const output_format& format, const write_context& context) {
  field_style style;
  if (format.output_bodyfile) {
    style.end = {']', ',', ' '};
    style.end_size = 3;
    style.separator_char = '|';
    style.separator_substitute = ';';
    return style;
  }
  style.end = {']', ' '};
  style.end_size = 2;
  if (format.separator_char != 0 && format.separator_substitute != 0) {
    style.separator_char = format.separator_char;
    style.separator_substitute = format.separator_substitute;
  }
  style.host_name = context.log.kind == log_kind::evtx ? "Computer" : "computer name";
  if (context.log.kind == log_kind::evtx && context.log.channel.empty())
    style.channel_name = "Channel";
  return style;
}

field_plan make_field_plan(const record_shape& shape, const field_style& style) {
  field_planner planner(style);
  for (const shape_column& column : shape.columns) planner.add(column);
  return planner.finish();
}

void field_plans::find(const record_shape& shape) {
  const auto found = plans_.find(shape.id);
  if (found == plans_.end() && plan_bytes_ > most_plan_bytes) {
    plans_.clear();
    plan_bytes_ = 0;
  }
  if (found != plans_.end()) {
    last_plan_ = &found->second;
  } else {
    field_plan plan = make_field_plan(shape, style_);
    plan_bytes_ += plan.text.size() + plan.steps.size() * sizeof(field_step) + sizeof(field_plan);
    last_plan_ = &plans_.emplace(shape.id, std::move(plan)).first->second;
  }
  last_shape_id_ = shape.id;
}

void field_values::read(const LogRecord& record) {
  const std::size_t count = record.shape->value_count;
  if (cells_.size() < count) cells_.resize(count);
  cell_reader cells(record.values);
  total_ = 0;
  for (std::size_t i = 0; i < count; ++i) {
    cells_[i] = cells.next();
    total_ += cells_[i].text.size();
  }
}

char* field_values::put_list(char* at, const field_plan& plan, const field_style& style,
                             bool& line_ends) const {
  const char* text = plan.text.data();
  line_ends = plan.has_line_ends;
  const value_cell* cell = cells_.data();
  for (const field_step& step : plan.steps) {
    if (step.text_size != 0) at = put_bytes(at, text, step.text_size);
    text += step.text_size;
    const std::string_view value = cell->text;
    if (!value.empty()) {
      at = put_bytes(at, text, step.name_size);
      if (cell->marked) [[unlikely]] {
        line_ends |= put_cleaned(at, value, style);
        at += value.size();
      } else {
        at = put_bytes(at, value.data(), value.size());
      }
      std::memcpy(at, style.end.data(), style.end.size());
      at += style.end_size;
    }
    text += step.name_size;
    ++cell;
  }
  return put_bytes(at, text, plan.tail_size);
}

}  // namespace zanvik
