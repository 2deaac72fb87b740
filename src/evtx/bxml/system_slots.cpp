// System fields by the order of the standard system template, for streams whose body has none.
#include <array>
#include <string>
#include <string_view>

#include "base/digits.h"
#include "evtx/bxml/bxml_decoder.h"
#include "evtx/bxml/bxml_tokens.h"
#include "evtx/bxml/slot_table.h"
#include "evtx/values/value_text.h"

namespace zanvik {
namespace {

struct system_field {
  std::string_view name;
  std::uint16_t size;  // bytes
  std::uint16_t type;
  int group;
};

// Version requires eight bytes, which no one-byte version has: meant, as is its being last.
constexpr std::array<system_field, 12> system_fields{{
    {"Level", 1, value_type::uint8, 0},
    {"Opcode", 1, value_type::uint8, 0},
    {"Task", 2, value_type::uint16, 1},
    {"EventID", 2, value_type::uint16, 1},
    {"EventID Qualifiers", 2, value_type::uint16, 1},
    {"Keywords", 8, value_type::hex64, 2},
    {"TimeCreated SystemTime", 8, value_type::filetime, 2},
    {"Correlation ActivityID", 16, value_type::guid, 3},
    {"Execution Process ID", 4, value_type::uint32, 4},
    {"Execution Thread ID", 4, value_type::uint32, 4},
    {"EventRecordID", 8, value_type::uint64, 5},
    {"Version", 8, value_type::uint8, 5},
}};

constexpr std::uint32_t slots_min = 8;
constexpr std::uint32_t slots_max = 20;

std::string system_text(const chunk_view& chunk, std::uint64_t value, const system_field& field) {
  std::string text;
  if (field.name == "Version") {
    text.push_back(static_cast<char>(chunk.bytes.at_or_zero<std::uint8_t>(value)));
  } else if (field.type == value_type::hex64) {
    append_decimal(text, chunk.bytes.at_or_zero<std::uint64_t>(value));
  } else {
    append_value_text(text, raw_value_at(chunk.bytes, value, field.type, field.size));
  }
  return text;
}

// The first field of the next size group, past the end after the last.
std::size_t next_group(std::size_t field) {
  const int group = system_fields[field].group;
  while (field < system_fields.size() && system_fields[field].group == group) ++field;
  return field;
}

}  // namespace

void fill_system_from_slots(field_map& fields, const chunk_view& chunk, std::uint64_t start) {
  const auto head = fragment_instance_at(chunk, start);
  if (!head) return;
  const auto table = slot_table_behind(chunk, start, head->length, head->definition);
  if (!table) return;
  const auto count = chunk.bytes.at<std::uint32_t>(*table);
  if (!count || *count < slots_min || *count > slots_max) return;
  std::uint64_t value = *table + 4 + 4 * *count;
  std::uint32_t slot = 0;
  std::size_t field = 0;
  while (slot < *count && field < system_fields.size()) {
    const auto size = chunk.bytes.at<std::uint16_t>(*table + 4 + 4 * slot);
    const auto type = chunk.bytes.at<std::uint16_t>(*table + 6 + 4 * slot);
    if (!size || !type) return;
    const system_field& expected = system_fields[field];
    if (*size != expected.size) {
      field = next_group(field);
      continue;
    }
    if (*type == expected.type) {
      if (!chunk.bytes.has(value, *size)) return;
      fields.try_emplace(std::string(expected.name),
                         field_value{*type, system_text(chunk, value, expected), 0});
      value += *size;
      ++slot;
    }
    ++field;
  }
}

}  // namespace zanvik
