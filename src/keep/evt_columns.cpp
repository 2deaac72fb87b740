#include "keep/evt_columns.h"

#include <string_view>

#include "base/digits.h"
#include "base/number_text.h"
#include "base/utf16_write.h"

namespace zanvik {
namespace {

constexpr char no_value = '-';

// The record's text for the source; null if the source is not a text of the record.
const evt_text* find_text(const evt_record& record, evt_value_source source) {
  switch (source.kind) {
    case evt_value::source_name:
      return &record.source_name;
    case evt_value::computer_name:
      return &record.computer_name;
    case evt_value::string:
      return &record.strings[source.number - 1];
    case evt_value::pulled_string:
      // Below the count, not equal to it: the last string cannot be pulled. That is meant.
      if (source.number == 0 || source.number >= record.strings.size()) return nullptr;
      return &record.strings[source.number - 1];
    default:
      return nullptr;
  }
}

// For text in which the conversion found control characters.
char* clean_text(char* begin, char* end) {
  char* out = begin;
  for (const char* in = begin; in != end; ++in) {
    if (*in == '\r' || *in == '\t') continue;
    *out++ = *in == '\n' ? ',' : *in;
  }
  return out;
}

evt_value_source source_of_name(std::string_view name) {
  const auto bar = name.find('_');
  if (bar == std::string_view::npos) return {};
  return {evt_value::pulled_string, unsigned_from_text(name.substr(bar + 1)).value_or(0)};
}

}  // namespace

std::vector<evt_column> evt_fields_all(std::size_t string_count, bool has_sid) {
  std::vector<evt_column> columns;
  columns.reserve(string_count + 3);
  columns.push_back({"source name", {evt_value::source_name, 0}});
  columns.push_back({"computer name", {evt_value::computer_name, 0}});
  if (has_sid) columns.push_back({"user sid", {evt_value::user_sid, 0}});
  for (std::uint32_t number = 1; number <= string_count; ++number) {
    char digits[24];
    const char* end = write_decimal(digits, number, 2);
    std::string name = "param_";
    name.append(digits, static_cast<std::size_t>(end - digits));
    columns.push_back({std::move(name), {evt_value::string, number}});
  }
  return columns;
}

std::vector<evt_column> evt_fields_named(const std::vector<std::string>& names) {
  std::vector<evt_column> columns;
  columns.reserve(names.size());
  const auto take = [&](std::string_view name, evt_value kind) {
    if (names[columns.size()] == name) columns.push_back({names[columns.size()], {kind, 0}});
  };
  if (names.size() > 1) {
    take("source name", evt_value::source_name);
    take("computer name", evt_value::computer_name);
    if (names.size() > 2) take("user sid", evt_value::user_sid);
  }
  for (std::size_t i = columns.size(); i < names.size(); ++i) {
    columns.push_back({names[i], source_of_name(names[i])});
  }
  return columns;
}

std::size_t evt_value_bound(const evt_record& record, evt_value_source source) {
  if (source.kind == evt_value::user_sid) return record.sid.empty() ? 0 : longest_sid_text;
  const evt_text* text = find_text(record, source);
  return text ? text->size() / 2 * 3 + 8 : 1;
}

char* write_evt_value(char* out, const evt_record& record, evt_value_source source, bool& marked) {
  if (source.kind == evt_value::user_sid) return write_sid_text(out, record.sid);
  const evt_text* text = find_text(record, source);
  if (!text) {
    *out++ = no_value;
    return out;
  }
  std::size_t units;
  unsigned kinds = kind_plain;
  char* const end = write_utf8_from_utf16(out, *text, units, kinds);
  marked = marked || kinds != kind_plain;
  return kinds & kind_control ? clean_text(out, end) : end;
}

}  // namespace zanvik
