#include "keep/slack_columns.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include "base/digits.h"
#include "base/text.h"

namespace zanvik {
namespace {

constexpr std::size_t good_name_bytes = 65;  // and more are not good
constexpr std::size_t long_value_bytes = 256;

bool is_good_name(const std::string& name) {
  return name.size() < good_name_bytes && name.find('\n') == std::string::npos;
}

char* put(char* out, std::string_view text) {
  if (!text.empty()) std::memcpy(out, text.data(), text.size());
  return out + text.size();
}

}  // namespace

void pack_columns(LogRecord& kept, const column_map& columns, record_container& records) {
  record_shape shape;
  std::size_t bound = 0;
  for (const auto& [name, text] : columns) {
    shape.columns.push_back({name, false, {}});
    bound += text.size() + max_cell_head;
  }
  shape.value_count = shape.columns.size();
  kept.shape = records.intern_shape(std::move(shape));
  char* const block = records.arena().reserve(bound);
  char* out = block;
  for (const auto& column : columns) {
    const std::string& text = column.second;
    out = put(write_cell_head(out, text.size(), needs_mark(text)), text);
  }
  records.arena().keep(static_cast<std::size_t>(out - block));
  kept.values = block;
}

std::string slot_column_name(unsigned number) {
  std::string name(number < 10 ? "s0" : "s");
  append_decimal(name, number);
  return name;
}

void add_slot_columns(column_map& columns, std::uint32_t& flags, const record_fields& record) {
  unsigned number = 0;
  std::string text;
  for (std::size_t slot = 0; slot < record.slots.size(); ++slot) {
    if (record.slots[slot].child != 0) continue;
    ++number;
    flags |= record.slots[slot].flags & 0x0fu;
    text.clear();
    append_slot_text(text, record, slot);
    if (text.empty()) continue;
    columns[slot_column_name(number)] = text;
  }
}

void clean_slack_columns(column_map& columns) {
  column_map cleaned;
  std::vector<std::string> junk;
  for (auto& [name, text] : columns) {
    if (!is_good_name(name)) {
      junk.push_back(std::move(text));
      continue;
    }
    if (text.size() > long_value_bytes) text += "...";
    trim_blanks(text);
    cleaned.emplace(name, std::move(text));
  }
  unsigned number = 0;
  for (std::string& text : junk) {
    std::string key = "unk";
    append_decimal(key, ++number);
    cleaned.emplace(std::move(key), std::move(text));
  }
  columns = std::move(cleaned);
}

}  // namespace zanvik
