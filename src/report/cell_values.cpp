#include "report/cell_values.h"

#include <algorithm>
#include <cstdio>

#include "base/time_parse.h"
#include "base/time_value.h"
#include "report/page_text.h"
#include "report/report_limits.h"

namespace zanvik {
namespace {

// Of data_text, and of one value in it.
constexpr std::size_t data_bytes = 1500, datum_bytes = 300;

std::size_t column_number(const question& asked, std::string_view name) {
  for (std::size_t i = 0; i < asked.columns.size(); ++i) {
    if (asked.columns[i].name == name) return i;
  }
  return SIZE_MAX;
}

// The text between `<name>` and `</name>`, or nothing.
std::string_view element_text(std::string_view xml, std::string_view name) {
  const std::string open = "<" + std::string(name) + ">", close = "</" + std::string(name) + ">";
  const std::size_t from = xml.find(open);
  if (from == std::string_view::npos) return {};
  const std::string_view rest = xml.substr(from + open.size());
  const std::size_t to = rest.find(close);
  return to == std::string_view::npos ? std::string_view() : rest.substr(0, to);
}

// The commands of a task in front of its XML, which begins with nothing of interest.
void complete_task(std::string& content) {
  const std::string_view command = element_text(content, "Command");
  if (command.empty()) return;
  std::string lead(command);
  const std::string_view arguments = element_text(content, "Arguments");
  if (!arguments.empty()) lead.append(1, ' ').append(arguments);
  content = lead + "\n\n" + content;
}

void complete_clock(std::span<std::string> cells, std::size_t before, std::size_t after,
                    std::size_t seconds) {
  if (!cells[seconds].empty()) return;
  const std::uint64_t from = parse_iso8601(cells[before]), to = parse_iso8601(cells[after]);
  if (from == 0 || to == 0) return;
  const double difference =
      (to >= from ? 1.0 : -1.0) * static_cast<double>(to >= from ? to - from : from - to) / 1e7;
  char text[64];
  std::snprintf(text, sizeof(text), "%+.3f", difference);
  cells[seconds] = text;
}

}  // namespace

void append_cell_value(std::string& out, const question_column& column, std::string_view value) {
  if (value.empty()) return;
  const std::string_view words =
      column.codes == nullptr ? std::string_view() : words_for(*column.codes, value);
  if (words.empty()) {
    append_visible(out, value, report_limits::cell_bytes);
    return;
  }
  out += words;
  // The number itself is what other tools show; texts and SIDs would only repeat the words.
  if (value[0] >= '0' && value[0] <= '9') out.append(" (").append(value).append(")");
}

void complete_cells(const question& asked, std::span<std::string> cells) {
  if (asked.name == "tasks") {
    const std::size_t content = column_number(asked, "content");
    if (content < cells.size()) complete_task(cells[content]);
  } else if (asked.name == "clock_changes") {
    const std::size_t before = column_number(asked, "old_time"),
                      after = column_number(asked, "new_time"),
                      seconds = column_number(asked, "offset_seconds");
    if (std::max({before, after, seconds}) < cells.size()) {
      complete_clock(cells, before, after, seconds);
    }
  }
}

std::string mark_text(std::uint32_t flags) {
  struct flag_name {
    event_flag flag;
    const char* name;
  };
  constexpr flag_name names[] = {
      {event_slack, "free space"},      {event_cut, "cut"},
      {event_outside_range, "outside"}, {event_no_template, "no template"},
      {event_carved, "carved"},         {event_deleted, "deleted log"},
  };
  std::string out;
  for (const flag_name& known : names) {
    if ((flags & known.flag) == 0) continue;
    out += out.empty() ? "" : ", ";
    out += known.name;
  }
  return out;
}

std::string data_text(const event_view& event) {
  std::string out, scratch;
  const auto& fields = event.shape().fields;
  for (std::size_t i = 0; i < fields.size() && out.size() < data_bytes; ++i) {
    if (fields[i].group == field_group::system) continue;
    const std::string_view text = event.text(static_cast<std::int32_t>(i), scratch);
    if (text.empty() || text == "-") continue;
    if (!out.empty()) out += "; ";
    if (!fields[i].name.empty()) {
      append_visible(out, fields[i].name, datum_bytes);
      out += ": ";
    }
    append_visible(out, text, datum_bytes);
  }
  return out;
}

}  // namespace zanvik
