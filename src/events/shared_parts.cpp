#include "events/shared_parts.h"

#include <algorithm>
#include <utility>

#include "base/limits.h"

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

const std::string* shared_parts::text(std::string_view text) {
  const std::lock_guard held(mutex_);
  const auto found = texts_.find(text);
  if (found != texts_.end()) return found->second.get();
  auto owned = std::make_unique<std::string>(text);
  const std::string* result = owned.get();
  texts_.emplace(*result, std::move(owned));
  bytes_ += text.size();
  return result;
}

const record_shape* shared_parts::names(std::span<const std::string_view> names) {
  std::size_t hash = names.size();
  for (const std::string_view name : names) hash = mix_hash(hash, name);
  const auto same = [](const shape_column& column, std::string_view name) {
    return !column.literal && column.name == name;
  };
  const std::lock_guard held(mutex_);
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
  return add_shape(hash, std::move(shape));
}

const record_shape* shared_parts::shape(record_shape shape) {
  const std::size_t hash = shape_hash(shape);
  const std::lock_guard held(mutex_);
  const auto [first, last] = shapes_.equal_range(hash);
  for (auto it = first; it != last; ++it) {
    if (it->second->columns == shape.columns) return it->second.get();
  }
  return add_shape(hash, std::move(shape));
}

bool shared_parts::is_full() const {
  const std::lock_guard held(mutex_);
  return texts_.size() + shapes_.size() > limits::shared_by_records ||
         bytes_ > limits::shared_by_records_bytes;
}

void shared_parts::clear() {
  const std::lock_guard held(mutex_);
  texts_.clear();
  shapes_.clear();
  bytes_ = 0;
  id_ = unique_number();
}

const record_shape* shared_parts::add_shape(std::size_t hash, record_shape shape) {
  shape.id = unique_number();
  shape.repeated_bytes = repeated_bytes(shape);
  bytes_ += shape.columns.size() * sizeof(shape_column) + shape.repeated_bytes;
  return shapes_.emplace(hash, std::make_unique<record_shape>(std::move(shape)))->second.get();
}

}  // namespace zanvik
