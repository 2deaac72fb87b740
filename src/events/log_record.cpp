#include "events/log_record.h"

#include <algorithm>
#include <functional>
#include <new>
#include <type_traits>
#include <utility>

#include "base/hash_mix.h"
#include "base/limits.h"
#include "base/unique_number.h"

namespace zanvik {
namespace {

std::size_t shape_hash(const record_shape& shape) {
  std::size_t hash = shape.columns.size();
  for (const shape_column& column : shape.columns) {
    hash = mix_hash(hash, column.name);
    if (column.literal) hash = mix_hash(hash, column.text);
  }
  return hash;
}

std::size_t repeated_bytes(const record_shape& shape) {
  std::size_t bytes = repeated_column_bytes * shape.columns.size();
  for (const shape_column& column : shape.columns) {
    bytes += column.name.size() + column.text.size();
  }
  return bytes;
}

}  // namespace

column_map columns_of(const LogRecord& record) {
  column_map columns;
  if (!record.shape) return columns;
  cell_reader cells(record.values);
  for (const shape_column& column : record.shape->columns) {
    columns.emplace(column.name, column.literal ? column.text : cells.next().text);
  }
  return columns;
}

record_container::record_container() : contents_id_(unique_number()) {}

void record_container::add(const LogRecord& record) {
  static_assert(std::is_trivially_destructible_v<LogRecord> &&
                alignof(LogRecord) <= alignof(std::max_align_t));
  char* const place = record_arena_.reserve(sizeof(LogRecord));
  LogRecord& added = *::new (place) LogRecord(record);
  record_arena_.keep(sizeof(LogRecord));
  records_.push_back(&added);
  if (!added.provider) added.provider = intern_text({});
  if (!added.description) added.description = intern_text({});
  if (!added.shape) added.shape = intern_shape({});
}

std::span<const LogRecord* const> record_container::in_time_order() {
  const auto earlier = [](const LogRecord* a, const LogRecord* b) { return a->time < b->time; };
  // Logs are usually in order already.
  if (std::is_sorted(records_.begin(), records_.end(), earlier)) return records_;
  // The times are beside the records while these are sorted, because looking each one up costs
  // more.
  std::vector<std::pair<std::uint64_t, const LogRecord*>> timed;
  timed.reserve(records_.size());
  for (const LogRecord* record : records_) timed.emplace_back(record->time, record);
  std::stable_sort(timed.begin(), timed.end(),
                   [](const auto& a, const auto& b) { return a.first < b.first; });
  ordered_.clear();
  ordered_.reserve(timed.size());
  for (const auto& [time, record] : timed) ordered_.push_back(record);
  return ordered_;
}

void record_container::clear() {
  records_.clear();
  ordered_.clear();
  texts_.clear();
  shapes_.clear();
  shared_bytes_ = 0;
  arena_.clear();
  record_arena_.clear();
  contents_id_ = unique_number();
}

void record_container::clear_records() {
  if (texts_.size() + shapes_.size() > limits::shared_by_records ||
      shared_bytes_ > limits::shared_by_records_bytes) {
    return clear();
  }
  records_.clear();
  ordered_.clear();
  arena_.clear();
  record_arena_.clear();
}

const std::string* record_container::intern_text(std::string_view text) {
  const auto found = texts_.find(text);
  if (found != texts_.end()) return found->second.get();
  auto owned = std::make_unique<std::string>(text);
  const std::string* result = owned.get();
  texts_.emplace(*result, std::move(owned));
  shared_bytes_ += text.size();
  return result;
}

const record_shape* record_container::intern_names(std::span<const std::string_view> names) {
  std::size_t hash = names.size();
  for (const std::string_view name : names) hash = mix_hash(hash, name);
  const auto same = [](const shape_column& column, std::string_view name) {
    return !column.literal && column.name == name;
  };
  const auto [first, last] = shapes_.equal_range(hash);
  for (auto it = first; it != last; ++it) {
    const std::vector<shape_column>& columns = it->second->columns;
    if (std::equal(columns.begin(), columns.end(), names.begin(), names.end(), same)) {
      return it->second.get();
    }
  }
  record_shape shape;
  for (const std::string_view name : names) shape.columns.push_back({std::string(name), false, {}});
  shape.value_count = names.size();
  return intern_shape(std::move(shape));
}

const record_shape* record_container::intern_shape(record_shape shape) {
  const std::size_t hash = shape_hash(shape);
  const auto [first, last] = shapes_.equal_range(hash);
  for (auto it = first; it != last; ++it) {
    if (it->second->columns == shape.columns) return it->second.get();
  }
  shape.id = unique_number();
  shape.repeated_bytes = repeated_bytes(shape);
  shared_bytes_ += shape.columns.size() * sizeof(shape_column) + shape.repeated_bytes;
  return shapes_.emplace(hash, std::make_unique<record_shape>(std::move(shape)))->second.get();
}

}  // namespace zanvik
