#include "evtx/record_time.h"

#include <algorithm>
#include <string>

#include "base/time_parse.h"
#include "base/time_value.h"

namespace zanvik {
namespace {

// The name of the value, for slots and fields.
constexpr std::string_view time_created_name = "TimeCreated SystemTime";

// "2012-03-01T12:34:56.1234567Z", or the form of a FILETIME value, which has a blank for the T.
std::uint64_t filetime_from_text(std::string text) {
  std::replace(text.begin(), text.end(), ' ', 'T');
  return parse_iso8601(text);
}

std::uint64_t filetime_from_slot(const record_fields& record, std::size_t slot) {
  const raw_value value = record.value(slot);
  const byte_cursor bytes(std::span(value.data, value.readable));
  if (value.type == value_type::filetime) return bytes.at_or_zero<std::uint64_t>(0);
  if (value.type == value_type::system_time) {
    const auto part = [&bytes](std::uint64_t i) { return bytes.at_or_zero<std::uint16_t>(2 * i); };
    return loose_to_filetime({.year = part(0),
                              .month = part(1),
                              .day = part(3),
                              .hour = part(4),
                              .minute = part(5),
                              .second = part(6),
                              .millisecond = part(7)});
  }
  std::string text;
  append_slot_text(text, record, slot);
  return filetime_from_text(std::move(text));
}

}  // namespace

// A slot that must exist is named after the attribute alone. So may be a datum of the event itself,
// but that is in a nested template.
std::ptrdiff_t find_time_slot(const record_layout& layout) {
  if (const auto slot = find_slot(layout, time_created_name); slot >= 0) return slot;
  const auto slot = find_slot(layout, "SystemTime");
  return slot >= 0 && layout.child_numbers[static_cast<std::size_t>(slot)] == 0 ? slot : -1;
}

std::uint64_t time_created(const record_fields& record) {
  std::uint64_t filetime = 0;
  if (record.layout->time_slot >= 0) {
    filetime = filetime_from_slot(record, static_cast<std::size_t>(record.layout->time_slot));
  } else if (const layout_field* field = find_layout_field(*record.layout, time_created_name)) {
    filetime = filetime_from_text(field->text);
  }
  return is_valid_filetime(filetime) ? filetime : 0;
}

}  // namespace zanvik
