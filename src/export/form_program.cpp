#include "export/form_program.h"

#include <algorithm>
#include <charconv>
#include <cstring>
#include <iterator>

#include "base/digits.h"
#include "export/quick_values.h"
#include "export/value_writer.h"

namespace zanvik {
namespace {

// Constant text is copied in whole steps, most of it in one: both sides have the room.
constexpr std::size_t copy_step = 32;

inline char* put_constant(char* out, const char* text, std::size_t bytes) {
  for (std::size_t i = 0; i < bytes; i += copy_step) std::memcpy(out + i, text + i, copy_step);
  return out + bytes;
}

char* put_bytes(char* out, std::string_view text) {
  std::memcpy(out, text.data(), text.size());
  return out + text.size();
}

// Room that a step finds behind its constant text, beside what a copy writes too much.
constexpr std::size_t step_room = quick_values::room + 64;

std::size_t room_of(const form_step& step) {
  return std::size_t{step.text_bytes} + step.close_bytes + step_room;
}

struct oddity {
  std::uint32_t flag;
  std::string_view name;
};
constexpr oddity oddities[] = {
    {event_slack, "slack"},
    {event_cut, "cut"},
    {event_outside_range, "outside_range"},
    {event_no_template, "no_template"},
    {event_carved, "carved"},
    {event_deleted, "deleted"},
};
constexpr std::string_view lossy_name = "lossy";

void put_json_oddities(output_buffer& out, std::uint32_t flags, bool lossy) {
  const auto put = [&out](std::string_view name) {
    out.append(",\"");
    out.append(name);
    out.append("\":true");
  };
  for (const oddity& each : oddities) {
    if (flags & each.flag) put(each.name);
  }
  if (lossy) put(lossy_name);
}

void put_xml_oddities(output_buffer& out, std::uint32_t flags) {
  for (const oddity& each : oddities) {
    if (!(flags & each.flag)) continue;
    out.append(" ");
    out.append(each.name);
    out.append("=\"true\"");
  }
}

// "zanvik: slack, lossy", with what stands before and behind it.
void put_csv_oddities(output_buffer& out, std::uint32_t flags, bool lossy, std::string_view before,
                      std::string_view behind) {
  out.append(before);
  std::string_view separator = "zanvik: ";
  const auto put = [&](std::string_view name) {
    out.append(separator);
    out.append(name);
    separator = ", ";
  };
  for (const oddity& each : oddities) {
    if (flags & each.flag) put(each.name);
  }
  if (lossy) put(lossy_name);
  out.append(behind);
}

// Beyond the year 9999 there is no such time: the last one stands for it.
void put_time_with_offset(output_buffer& out, std::uint64_t filetime) {
  constexpr std::uint64_t last_of_9999 = 2'650'467'743'999'999'999;
  constexpr std::size_t to_microseconds = 26;  // characters
  char* at = out.room(48);
  write_iso_time(at, std::min(filetime, last_of_9999));
  std::memcpy(at + to_microseconds, "+00:00", 6);
  out.commit(at + to_microseconds + 6);
}

void put_unix_microseconds(output_buffer& out, std::uint64_t filetime) {
  constexpr std::int64_t epoch = 11'644'473'600'000'000;
  char* at = out.room(24);
  const auto microseconds = static_cast<std::int64_t>(filetime / 10) - epoch;
  out.commit(std::to_chars(at, at + 24, microseconds).ptr);
}

}  // namespace

std::string_view level_text(const event_value& value) {
  static constexpr std::string_view names[] = {"information", "critical",    "error",
                                               "warning",     "information", "verbose"};
  std::uint64_t level = 0;
  if (!as_unsigned(value, level) || level >= std::size(names)) level = 0;
  return names[level];
}

std::string keyword_texts(const event_value& value) {
  struct row {
    std::uint64_t bit;
    std::string_view name;
  };
  static constexpr row names[] = {
      {0x80000000000000, "Classic"},       {0x40000000000000, "Correlation Hint"},
      {0x20000000000000, "Audit Success"}, {0x10000000000000, "Audit Failure"},
      {0x08000000000000, "SQM"},           {0x04000000000000, "WDI Diag"},
      {0x02000000000000, "WDI Context"},   {0x01000000000000, "Response Time"}};
  std::string text;
  std::uint64_t keywords = 0;
  if (!as_unsigned(value, keywords)) return text;
  for (const row& known : names) {
    if (!(keywords & known.bit)) continue;
    text += text.empty() ? "\"" : ",\"";
    text += known.name;
    text += '"';
  }
  if (!text.empty() || keywords == 0) return text;
  text = "\"0x";
  append_hex(text, keywords);
  return text + '"';
}

namespace {

// Returns whether anything was lost, which may be what only XML cannot hold.
bool put_xml_string(output_buffer& out, const form_program& xml, const event_view& event) {
  bool lossy = false;
  bool lost = false;
  const std::string& text =
      out.render([&](output_buffer& memory) { lost = xml.write(memory, event, {}, false); });
  constexpr std::size_t piece_bytes = 64 << 10;
  for (std::string_view rest = text; !rest.empty();) {
    std::size_t bytes = std::min(rest.size(), piece_bytes);
    // A character stays in one piece.
    while (bytes < rest.size() && (rest[bytes] & 0xc0) == 0x80) --bytes;
    char* at = out.room(escaped_bound(bytes));
    out.commit(write_escaped_utf8<escape_form::json>(at, rest.substr(0, bytes), lossy));
    rest.remove_prefix(bytes);
  }
  return lost || lossy;
}

}  // namespace

void form_program::add(gap how, std::int32_t slot, std::string_view open, std::string_view close) {
  form_step step;
  step.how = how;
  step.slot = slot;
  step.text = static_cast<std::uint32_t>(pool_.size());
  const auto keep = [this](std::string_view text) {
    pool_.append(text);
    return static_cast<std::uint32_t>(text.size());
  };
  step.text_bytes = keep(pending_);
  step.open_bytes = keep(open);
  step.close_bytes = keep(close);
  pending_.clear();
  if (how == gap::none) pool_.append(copy_step, '\0');  // what a copy reads behind a text
  room_ += room_of(step);
  steps_.push_back(step);
}

void form_program::finish() {
  add(gap::none);
  pool_.shrink_to_fit();
  steps_.shrink_to_fit();
  pending_ = {};
}

// Writes one event. The room for all constant text and quick values of most programs is asked for
// at once; a longer program asks before each step. Other values go through the buffer. Each
// function takes the writing position and returns the new one.
class form_program::writer {
 public:
  writer(const form_program& program, output_buffer& out, const event_view& event,
         std::string_view log, bool log_lossy)
      : program_(program),
        out_(out),
        event_(event),
        log_(log),
        lossy_(program.lossy_ || log_lossy),
        quick_(event.readable_end(), lossy_),
        sink_(out, event.readable_end(), lossy_) {}

  bool run() {
    if (program_.room_ <= output_buffer::most_room) {
      steps<false>();
    } else {
      steps<true>();
    }
    return lossy_;
  }

 private:
  template <bool each>
  void steps();
  char* constant(char* at, const form_step& step);
  template <escape_form form>
  char* text(char* at, const event_value& value);
  char* json_value(char* at, const event_value& value);
  template <bool each>
  char* xml_element(char* at, const form_step& step, const event_value& value);
  char* of_slot(char* at, const form_step& step, const event_value& value);
  void of_event(const form_step& step);

  // Where to go on behind what went through the buffer.
  char* behind_buffer() {
    quick_.forget();
    return program_.room_ <= output_buffer::most_room ? out_.room(program_.room_) : out_.position();
  }

  std::string_view open_of(const form_step& step) const {
    return {program_.pool_.data() + step.text + step.text_bytes, step.open_bytes};
  }
  std::string_view close_of(const form_step& step) const {
    const std::size_t before = std::size_t{step.text_bytes} + step.open_bytes;
    return {program_.pool_.data() + step.text + before, step.close_bytes};
  }

  const form_program& program_;
  output_buffer& out_;
  const event_view& event_;
  std::string_view log_;
  bool lossy_;
  bool cell_empty_ = false;  // a cell that people see has begun, without a character so far
  quick_values quick_;
  value_sink sink_;
};

// The same for a program that has too many steps to ask for the room of all.
char* form_program::writer::constant(char* at, const form_step& step) {
  const std::size_t bytes = room_of(step);
  const char* const text = program_.pool_.data() + step.text;
  if (static_cast<std::size_t>(out_.limit() - at) >= bytes) {
    return put_constant(at, text, step.text_bytes);
  }
  out_.commit(at);
  quick_.forget();
  if (bytes <= output_buffer::most_room) {
    return put_constant(out_.room(bytes), text, step.text_bytes);
  }
  out_.append({text, step.text_bytes});
  return out_.room(std::min<std::size_t>(step.close_bytes + step_room, output_buffer::most_room));
}

template <escape_form form>
char* form_program::writer::text(char* at, const event_value& value) {
  if (char* const end = quick_.text<form>(at, value)) return end;
  out_.commit(at);
  sink_.text<form>(value);
  return behind_buffer();
}

char* form_program::writer::json_value(char* at, const event_value& value) {
  if (char* const end = quick_.json(at, value)) return end;
  out_.commit(at);
  sink_.json_value(value);
  return behind_buffer();
}

template <bool each>
char* form_program::writer::xml_element(char* at, const form_step& step, const event_value& value) {
  const std::string_view close = close_of(step);
  char* const begin = at + 1;
  const bool roomy = !each || close.size() <= output_buffer::most_room - step_room;
  char* const end = roomy ? quick_.text<escape_form::xml_text>(begin, value) : nullptr;
  if (!end) {
    out_.commit(at);
    sink_.xml_element(value, close);
    return behind_buffer();
  }
  if (end == begin) {
    std::memcpy(at, "/>", 2);
    return at + 2;
  }
  *at = '>';
  return put_constant(end, close.data(), close.size());
}

// A gap that a value of the event fills.
char* form_program::writer::of_slot(char* at, const form_step& step, const event_value& value) {
  out_.commit(at);
  switch (step.how) {
    case gap::json_datum:
      sink_.json_datum(value);
      break;
    case gap::json_items:
      sink_.json_items(value);
      break;
    case gap::json_number:
      sink_.json_number(value);
      break;
    case gap::json_text_items:
      sink_.json_text_items(value);
      break;
    case gap::csv_start:
      out_.append("\"");
      cell_empty_ = !sink_.csv_formula_text(value);
      break;
    case gap::csv_text:
      cell_empty_ = !sink_.csv_formula_text(value);
      break;
    case gap::level_name:
      out_.append(level_text(value));
      break;
    case gap::keyword_names:
      out_.append(keyword_texts(value));
      break;
    case gap::xml_repeated:
      sink_.xml_repeated(value, open_of(step), close_of(step));
      break;
    default:
      of_event(step);
      break;
  }
  return behind_buffer();
}

// A gap that something else fills.
void form_program::writer::of_event(const form_step& step) {
  const event_header& header = event_.header();
  switch (step.how) {
    case gap::json_list_end:
      out_.take_back(',');
      break;
    case gap::csv_guard:
      if (cell_empty_) out_.append("'");
      cell_empty_ = false;
      break;
    case gap::time_offset:
      put_time_with_offset(out_, event_.time());
      break;
    case gap::unix_microseconds:
      put_unix_microseconds(out_, event_.time());
      break;
    case gap::xml_string:
      lossy_ = put_xml_string(out_, *program_.xml_, event_) || lossy_;
      break;
    case gap::log_path:
      out_.append(log_);
      break;
    case gap::json_oddities:
      put_json_oddities(out_, header.flags, lossy_);
      break;
    case gap::xml_oddities:
      put_xml_oddities(out_, header.flags);
      break;
    case gap::csv_oddities:
      put_csv_oddities(out_, header.flags, lossy_, open_of(step), close_of(step));
      break;
    default:
      break;
  }
}

// `each`: each step asks for its own room.
template <bool each>
void form_program::writer::steps() {
  const event_value* const slots = event_.slots().data();
  const event_header& header = event_.header();
  const event_value absent;
  const char* const pool = program_.pool_.data();
  char* at = each ? out_.position() : out_.room(program_.room_);
  for (const form_step& step : program_.steps_) {
    at = each ? constant(at, step) : put_constant(at, pool + step.text, step.text_bytes);
    const event_value& value = step.slot >= 0 ? slots[step.slot] : absent;
    switch (step.how) {
      case gap::none:
        break;
      case gap::json_value:
        at = json_value(at, value);
        break;
      case gap::json_text:
        at = text<escape_form::json>(at, value);
        break;
      case gap::json_line:
        at = text<escape_form::json_line>(at, value);
        break;
      case gap::csv_text:
        cell_empty_ = cell_empty_ && step.text_bytes == 0;
        at = cell_empty_ ? of_slot(at, step, value) : text<escape_form::csv>(at, value);
        break;
      case gap::xml_content:
        at = text<escape_form::xml_text>(at, value);
        break;
      case gap::xml_attribute:
        at = text<escape_form::xml_attribute>(at, value);
        break;
      case gap::xml_element:
        at = xml_element<each>(at, step, value);
        break;
      case gap::record_number:
        at = write_decimal(at, header.record_number);
        break;
      case gap::file_offset:
        at = write_decimal(at, header.file_offset);
        break;
      case gap::written:
        at = quick_.time(at, header.written);
        break;
      case gap::time:
        at = quick_.time(at, event_.time());
        break;
      case gap::json_oddities:
      case gap::csv_oddities:
        if (header.flags != 0 || lossy_) at = of_slot(at, step, value);
        break;
      case gap::xml_oddities:
        if (header.flags != 0) at = of_slot(at, step, value);
        break;
      case gap::log_path:
        at = log_.size() <= quick_values::room ? put_bytes(at, log_) : of_slot(at, step, value);
        break;
      case gap::csv_guard:
        cell_empty_ = cell_empty_ && step.text_bytes == 0;
        [[fallthrough]];
      default:
        at = of_slot(at, step, value);
        break;
    }
  }
  out_.commit(at);
}

bool form_program::write(output_buffer& out, const event_view& event, std::string_view log,
                         bool log_lossy) const {
  return writer(*this, out, event, log, log_lossy).run();
}

}  // namespace zanvik
