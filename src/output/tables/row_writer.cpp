#include "output/tables/row_writer.h"

#include <algorithm>
#include <charconv>
#include <cstring>
#include <vector>

#include "output/path_alias.h"
#include "output/short_copy.h"

namespace zanvik {
namespace {

constexpr std::size_t stride = short_copy_bytes;
static_assert(row_plan::slack >= stride && long_value == 2 * stride);
static_assert(row_buffer::slack >= 2 * stride && record_arena::slack >= 2 * stride);

constexpr char blanks[stride + 1] = "                                ";

// Indices of the columns that every table has. The date and the time may be one column.
constexpr std::size_t number_column = 0;
constexpr std::size_t date_column = 2;
constexpr std::size_t time_column = 3;

// Room for the numbers, the time, the offset and the mark, without widths and separators.
constexpr std::size_t fixed_cells_room = 256;

// Copies a value shorter than `long_value` from a block, which has slack after it.
char* put_short(char* at, std::string_view value) {
  std::memcpy(at, value.data(), stride);
  if (value.size() > stride) std::memcpy(at + stride, value.data() + stride, stride);
  return at + value.size();
}

// Blanks from `at` until the cell that began at `begin` is `width` wide.
char* put_blanks(char* at, char* begin, std::size_t width) {
  char* const end = begin + width;
  if (end <= at) return at;
  for (; at < end; at += stride) std::memcpy(at, blanks, stride);
  return end;
}

char* put_padded(char* at, std::string_view text, std::size_t width) {
  return put_blanks(put_text(at, text), at, width);
}

char* put_number(char* at, std::uint64_t value, std::size_t width) {
  char digits[20];
  const char* end = std::to_chars(digits, digits + sizeof digits, value).ptr;
  const std::string_view text(digits, static_cast<std::size_t>(end - digits));
  if (text.size() < width) at = put_blanks(at, at, width - text.size());
  return put_text(at, text);
}

}  // namespace

row_writer::row_writer(row_buffer& out, time_cells& times, const table_layout& layout,
                       row_plans& plans, const output_format& format, const write_context& context)
    : out_(out),
      times_(times),
      layout_(layout),
      plans_(plans),
      format_(format),
      context_(context),
      rules_(format),
      number_width_(layout_.columns[number_column].width),
      date_width_(layout_.columns[date_column].width),
      time_width_(format.pair_datetime ? 0 : layout_.columns[time_column].width) {
  // A mark tells of commas, bars and line ends; for any other separator all values must be
  // searched.
  const char separator = rules_.separator_char;
  look_at_all_ = separator != 0 && separator != ',' && separator != '|';
  append_text_cell(log_cell_, apply_alias(format, context.log.path), layout_.columns.back().width,
                   rules_);
  fixed_room_ = fixed_cells_room + date_width_ + time_width_ + 8 * format.csv_separator.size();
}

void row_writer::write(const LogRecord& record) {
  const row_plan& plan = plan_of(record);
  if (record.description != description_ || record.provider != provider_ ||
      record.level != level_ || record.is_evtx != is_evtx_) {
    renew_caption(record);
  }
  row_room_ = fixed_room_ + caption_.size() + plan.room + log_cell_.size();

  char* at = out_.room(row_room_);
  at = put_separator(put_number(at, record.record_number, number_width_));
  at = put_separator(put_number(at, record.event_id & 0xffff, number_width_));
  at = put_time(at, record.time);
  if (context_.show_offsets || context_.inc_slack) at = put_marks(at, record);
  at = put_text(at, caption_);
  if (rules_.quoted) {
    at = rules_.padded ? put_fields<true, true>(at, plan, record.values)
                       : put_fields<false, true>(at, plan, record.values);
  } else {
    at = rules_.padded ? put_fields<true, false>(at, plan, record.values)
                       : put_fields<false, false>(at, plan, record.values);
  }
  if (plan.has_log_cell) at = put_text(at, log_cell_);
  if (format_.row_newline) *at++ = '\n';
  out_.commit(at);
}

const row_plan& row_writer::plan_of(const LogRecord& record) {
  const std::size_t shape = plans_.shapes.of(record);
  if (shape >= plans_.plans.size()) plans_.plans.resize(shape + 1);
  if (plans_.plans[shape].made()) return plans_.plans[shape];
  if (plans_.bytes > most_plan_bytes) {
    // In one step: a string that an empty one is moved to would keep its memory.
    plans_.plans = std::vector<row_plan>(plans_.plans.size());
    plans_.bytes = 0;
  }
  row_plan& plan = plans_.plans[shape];
  plan = make_row_plan(layout_, record, rules_, format_.csv_separator);
  plans_.bytes += plan.text.size() + plan.steps.size() * sizeof(plan_step);
  return plan;
}

void row_writer::renew_caption(const LogRecord& record) {
  description_ = record.description;
  provider_ = record.provider;
  level_ = record.level;
  is_evtx_ = record.is_evtx;
  std::size_t column = layout_.first_field - 1 - layout_.has_description - layout_.has_provider;
  const auto add = [&](std::string_view text) {
    append_text_cell(caption_, text, layout_.columns[column++].width, rules_);
    caption_ += format_.csv_separator;
  };
  caption_.clear();
  add(level_text(is_evtx_, level_));
  if (layout_.has_description) add(*description_);
  if (layout_.has_provider) add(*provider_);
}

char* row_writer::put_separator(char* at) const { return put_text(at, format_.csv_separator); }

// Both forms are followed by a separator.
char* row_writer::put_time(char* at, std::uint64_t filetime) {
  times_.read(filetime);
  if (format_.pair_datetime) {
    if (rules_.padded && format_.pad_fields) *at++ = ' ';
    at = put_padded(at, times_.date(), date_width_);  // the date alone takes the width
    *at++ = ' ';
    return put_separator(put_text(at, times_.time()));
  }
  at = put_separator(put_padded(at, times_.date(), date_width_));
  if (format_.pad_fields) *at++ = ' ';
  return put_separator(put_padded(at, times_.time(), time_width_));
}

char* row_writer::put_marks(char* at, const LogRecord& record) {
  std::size_t column = (format_.pair_datetime ? date_column : time_column) + 1;
  scratch_.clear();
  const auto add = [&](std::string_view text) {
    append_text_cell(scratch_, text, layout_.columns[column++].width, rules_);
    scratch_ += format_.csv_separator;
  };
  if (context_.show_offsets) add(format_offset(record.file_offset, format_.base16));
  if (context_.inc_slack) add((record.flags & record_starred) != 0 ? "*" : "");
  return put_text(at, scratch_);
}

template <bool padded, bool quoted>
char* row_writer::put_fields(char* at, const row_plan& plan, const char* values) {
  const char* text = plan.text.data();
  // A length of `long_value` or more, and a mark, are visible in these bits of a head's first byte.
  const unsigned long_way = look_at_all_ ? 0xff : 0x81;
  for (const plan_step& step : plan.steps) {
    at = put_bytes(at, text, step.text_size);
    text += step.text_size;
    const auto head = static_cast<std::uint8_t>(*values);
    if ((head & long_way) != 0) [[unlikely]] {
      const value_cell cell = cell_reader(values).next();
      values = cell.text.data() + cell.text.size();
      if (!step.skipped) at = put_long_cell(at, cell, step.width);
      continue;
    }
    const std::string_view value(values + 1, head >> 1);
    values = value.data() + value.size();
    if (step.skipped) continue;
    char* const begin = at;
    const bool wrapped = quoted && rules_.wraps(value);
    if (wrapped) *at++ = '"';
    at = put_short(at, value);
    if (wrapped) *at++ = '"';
    if (padded) at = put_blanks(at, begin, step.width);
  }
  return put_bytes(at, text, plan.tail_size);
}

char* row_writer::put_long_cell(char* at, value_cell cell, std::size_t width) {
  std::string_view text = cell.text;
  if (cell.marked || look_at_all_ || rules_.quoted) {
    scratch_.clear();
    append_text_cell(scratch_, text, width, rules_);
    text = scratch_;
  }
  // The row continues after it, so its whole room is requested again.
  out_.commit(at);
  at = out_.room(std::max(text.size(), width) + row_room_);
  return put_padded(at, text, width);
}

}  // namespace zanvik
