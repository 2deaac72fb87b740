#include "export/form_program.h"

#include <algorithm>
#include <charconv>
#include <cstring>
#include <iterator>

#include "base/digits.h"
#include "export/value_writer.h"

namespace zanvik {
namespace {

// Constant text, most of it short: 16 bytes at a time, since both sides have the room.
inline void put_constant(output_buffer& out, const char* text, std::size_t bytes) {
  constexpr std::size_t step = 16;
  if (bytes > output_buffer::most_room - step) {
    out.append({text, bytes});
    return;
  }
  char* at = out.room(bytes + step);
  for (std::size_t i = 0; i < bytes; i += step) std::memcpy(at + i, text + i, step);
  out.commit(at + bytes);
}

void put_json_oddities(output_buffer& out, std::uint32_t flags, bool lossy) {
  if (flags & event_slack) out.append(",\"slack\":true");
  if (flags & event_cut) out.append(",\"cut\":true");
  if (flags & event_outside_range) out.append(",\"outside_range\":true");
  if (flags & event_no_template) out.append(",\"no_template\":true");
  if (flags & event_carved) out.append(",\"carved\":true");
  if (lossy) out.append(",\"lossy\":true");
}

void put_xml_oddities(output_buffer& out, std::uint32_t flags) {
  if (flags & event_slack) out.append(" slack=\"true\"");
  if (flags & event_cut) out.append(" cut=\"true\"");
  if (flags & event_outside_range) out.append(" outside_range=\"true\"");
  if (flags & event_no_template) out.append(" no_template=\"true\"");
  if (flags & event_carved) out.append(" carved=\"true\"");
}

void put_number(output_buffer& out, std::uint64_t number) {
  char* at = out.room(24);
  out.commit(write_decimal(at, number));
}

void put_time(output_buffer& out, std::uint64_t filetime) {
  char* at = out.room(32);
  out.commit(write_iso_time(at, filetime));
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

void put_level(output_buffer& out, const event_value& value) {
  static constexpr std::string_view names[] = {"information", "critical",    "error",
                                               "warning",     "information", "verbose"};
  std::uint64_t level = 0;
  if (!as_unsigned(value, level) || level >= std::size(names)) level = 0;
  out.append(names[level]);
}

void put_keywords(output_buffer& out, const event_value& value) {
  struct row {
    std::uint64_t bit;
    std::string_view name;
  };
  static constexpr row names[] = {
      {0x80000000000000, "Classic"},       {0x40000000000000, "Correlation Hint"},
      {0x20000000000000, "Audit Success"}, {0x10000000000000, "Audit Failure"},
      {0x08000000000000, "SQM"},           {0x04000000000000, "WDI Diag"},
      {0x02000000000000, "WDI Context"},   {0x01000000000000, "Response Time"}};
  std::uint64_t keywords = 0;
  if (!as_unsigned(value, keywords)) return;
  bool any = false;
  for (const row& known : names) {
    if (!(keywords & known.bit)) continue;
    out.append(any ? ",\"" : "\"");
    out.append(known.name);
    out.append("\"");
    any = true;
  }
  if (any || keywords == 0) return;
  out.append("\"0x");
  char* at = out.room(16);
  out.commit(write_hex(at, keywords));
  out.append("\"");
}

void put_xml_string(output_buffer& out, const form_program& xml, const event_view& event) {
  std::string text;
  output_buffer memory(text);
  xml.write(memory, event, {}, false);
  memory.flush();
  constexpr std::size_t piece_bytes = 64 << 10;
  bool lossy = false;
  for (std::string_view rest = text; !rest.empty();) {
    std::size_t bytes = std::min(rest.size(), piece_bytes);
    // A character stays in one piece.
    while (bytes < rest.size() && (rest[bytes] & 0xc0) == 0x80) --bytes;
    char* at = out.room(escaped_bound(bytes));
    out.commit(write_escaped_utf8<escape_form::json>(at, rest.substr(0, bytes), lossy));
    rest.remove_prefix(bytes);
  }
}

}  // namespace

void form_program::add(gap how, std::int32_t slot, std::string_view open, std::string_view close) {
  form_step step;
  step.how = how;
  step.slot = slot;
  const auto keep = [this](std::string_view text, std::uint32_t& at, std::uint32_t& bytes) {
    at = static_cast<std::uint32_t>(pool_.size());
    bytes = static_cast<std::uint32_t>(text.size());
    pool_.append(text);
  };
  // Texts are copied in steps that read up to 16 bytes behind them.
  pool_.reserve(pool_.size() + pending_.size() + open.size() + close.size() + 32);
  keep(pending_, step.text, step.text_bytes);
  keep(open, step.open, step.open_bytes);
  keep(close, step.close, step.close_bytes);
  pending_.clear();
  if (how == gap::none) pool_.append(16, '\0');
  steps_.push_back(step);
}

bool form_program::write(output_buffer& out, const event_view& event, std::string_view log,
                         bool log_lossy) const {
  bool lossy = lossy_ || log_lossy;
  value_sink sink(out, event.readable_end(), lossy);
  const auto slots = event.slots();
  const event_value absent;
  for (const form_step& step : steps_) {
    put_constant(out, pool_.data() + step.text, step.text_bytes);
    const event_value& value = step.slot >= 0 ? slots[static_cast<std::size_t>(step.slot)] : absent;
    switch (step.how) {
      case gap::none:
        break;
      case gap::json_value:
        sink.json_value(value);
        break;
      case gap::json_datum:
        sink.json_datum(value);
        break;
      case gap::json_items:
        sink.json_items(value);
        break;
      case gap::json_list_end:
        out.take_back(',');
        break;
      case gap::json_text:
        sink.text<escape_form::json>(value);
        break;
      case gap::json_line:
        sink.text<escape_form::json_line>(value);
        break;
      case gap::json_number:
        sink.json_number(value);
        break;
      case gap::json_text_items:
        sink.json_text_items(value);
        break;
      case gap::csv_start:
        sink.csv_cell_start(value);
        break;
      case gap::csv_text:
        sink.text<escape_form::csv>(value);
        break;
      case gap::level_name:
        put_level(out, value);
        break;
      case gap::keyword_names:
        put_keywords(out, value);
        break;
      case gap::xml_content:
        sink.text<escape_form::xml_text>(value);
        break;
      case gap::xml_attribute:
        sink.text<escape_form::xml_attribute>(value);
        break;
      case gap::xml_element:
        sink.xml_element(value, {pool_.data() + step.close, step.close_bytes});
        break;
      case gap::xml_repeated:
        sink.xml_repeated(value, {pool_.data() + step.open, step.open_bytes},
                          {pool_.data() + step.close, step.close_bytes});
        break;
      case gap::record_number:
        put_number(out, event.header().record_number);
        break;
      case gap::file_offset:
        put_number(out, event.header().file_offset);
        break;
      case gap::written:
        put_time(out, event.header().written);
        break;
      case gap::time:
        put_time(out, event.time());
        break;
      case gap::time_offset:
        put_time_with_offset(out, event.time());
        break;
      case gap::unix_microseconds:
        put_unix_microseconds(out, event.time());
        break;
      case gap::xml_string:
        put_xml_string(out, *xml_, event);
        break;
      case gap::log_path:
        out.append(log);
        break;
      case gap::json_oddities:
        put_json_oddities(out, event.header().flags, lossy);
        break;
      case gap::xml_oddities:
        put_xml_oddities(out, event.header().flags);
        break;
    }
  }
  return lossy;
}

}  // namespace zanvik
