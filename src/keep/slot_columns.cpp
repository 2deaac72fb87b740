#include "keep/slot_columns.h"

#include <cstring>
#include <map>
#include <utility>

#include "base/limits.h"
#include "keep/slack_columns.h"

namespace zanvik {

bool slot_columns::add(LogRecord& kept, const record_fields& record, record_container& records) {
  std::uint32_t flags = kept.flags;
  if (!collect(record, flags)) return false;
  kept.flags = flags;
  if (found_.empty()) return true;
  const merged_shape& merged = merged_with(*kept.shape, records);
  write_block(kept, merged, records);
  kept.shape = merged.shape;
  return true;
}

bool slot_columns::collect(const record_fields& record, std::uint32_t& flags) {
  text_.clear();
  found_.clear();
  slots_.reset();
  unsigned number = 0;
  for (std::size_t slot = 0; slot < record.slots.size(); ++slot) {
    if (record.slots[slot].child != 0) continue;
    if (++number > most_slots) return false;
    flags |= record.slots[slot].flags & 0x0fu;
    const std::size_t before = text_.size();
    append_slot_text(text_, record, slot);
    if (text_.size() == before) continue;
    found_.push_back({number, text_.size()});
    slots_.set(number - 1);
  }
  return true;
}

const slot_columns::merged_shape& slot_columns::merged_with(const record_shape& base,
                                                            record_container& records) {
  const merged_key key{base.id, slots_};
  const auto known = merged_.find(key);
  if (known != merged_.end()) return known->second;
  if (merged_.size() >= limits::cached_layouts) merged_.clear();
  return merged_.emplace(key, merge(base, records)).first->second;
}

slot_columns::merged_shape slot_columns::merge(const record_shape& base,
                                               record_container& records) const {
  struct column {
    const shape_column* literal = nullptr;
    value_source source;
  };
  std::map<std::string, column> columns;
  std::size_t cell = 0;
  for (const shape_column& own : base.columns) {
    if (own.literal) {
      columns[own.name] = {&own, {}};
    } else {
      columns[own.name] = {nullptr, {false, cell++}};
    }
  }
  for (std::size_t i = 0; i < found_.size(); ++i) {
    columns[slot_column_name(found_[i].number)] = {nullptr, {true, i}};
  }
  merged_shape merged;
  record_shape shape;
  for (const auto& [name, from] : columns) {
    shape.columns.push_back(
        {name, from.literal != nullptr, from.literal ? from.literal->text : ""});
    if (!from.literal) merged.sources.push_back(from.source);
  }
  shape.value_count = merged.sources.size();
  merged.shape = records.intern_shape(std::move(shape));
  return merged;
}

void slot_columns::write_block(LogRecord& kept, const merged_shape& merged,
                               record_container& records) {
  cells_.clear();
  std::size_t bound = text_.size();
  cell_reader reader(kept.values);
  for (std::size_t i = 0; i < kept.shape->value_count; ++i) {
    cells_.push_back(reader.next());
    bound += cells_.back().text.size();
  }
  bound += merged.sources.size() * max_cell_head;
  char* const block = records.arena().reserve(bound);
  char* out = block;
  for (const value_source source : merged.sources) {
    value_cell cell;
    if (source.of_slot) {
      cell.text = slot_text(source.index);
      cell.marked = needs_mark(cell.text);
    } else {
      cell = cells_[source.index];
    }
    out = write_cell_head(out, cell.text.size(), cell.marked);
    if (!cell.text.empty()) std::memcpy(out, cell.text.data(), cell.text.size());
    out += cell.text.size();
  }
  records.arena().keep(static_cast<std::size_t>(out - block));
  kept.values = block;
}

std::string_view slot_columns::slot_text(std::size_t index) const {
  const std::size_t begin = index == 0 ? 0 : found_[index - 1].end;
  return std::string_view(text_).substr(begin, found_[index].end - begin);
}

}  // namespace zanvik
