#include "output/tables/table_survey.h"

#include <algorithm>

#include "output/prefetch.h"

namespace zanvik {
namespace {

constexpr std::size_t longest_measured = 599;  // a longer value does not widen its column

}  // namespace

std::size_t shape_index::find(std::uint64_t shape_id, bool anomalous) {
  const auto [at, added] = numbers_[anomalous].try_emplace(shape_id, count_);
  if (added) ++count_;
  return at->second;
}

void table_survey::add(std::span<const LogRecord* const> records) {
  for (std::size_t i = 0; i < records.size(); ++i) {
    if (i + records_ahead < records.size()) {
      prefetch_bytes(records[i + records_ahead], sizeof(LogRecord));
    }
    add(*records[i]);
  }
}

void table_survey::add(const LogRecord& record) {
  const std::size_t number = shapes_.of(record);
  if (number == uses_.size()) add_use(*record.shape, is_anomalous(record));
  ++uses_[number].records;
  ++records_;
  if (measure_ && record.shape->value_count != 0) measure_values(record, uses_[number].longest);
  if (record.is_evtx) {
    has_provider_ = true;
    provider_width_ = std::max(provider_width_, record.provider->size());
  }
  // The captions of anomalous records do not count.
  if (record.description->size() > description_width_ && !is_anomalous(record)) {
    description_width_ = record.description->size();
  }
}

void table_survey::add(const table_survey& following) {
  for (const shape_use& use : following.uses_) {
    const std::size_t number = shapes_.of(*use.shape, use.anomalous);
    if (number == uses_.size()) add_use(*use.shape, use.anomalous);
    shape_use& own = uses_[number];
    own.records += use.records;
    for (std::size_t i = 0; i < own.longest.size(); ++i) {
      own.longest[i] = std::max(own.longest[i], use.longest[i]);
    }
  }
  records_ += following.records_;
  value_bytes_ += following.value_bytes_;
  has_provider_ = has_provider_ || following.has_provider_;
  provider_width_ = std::max(provider_width_, following.provider_width_);
  description_width_ = std::max(description_width_, following.description_width_);
}

void table_survey::add_use(const record_shape& shape, bool anomalous) {
  uses_.push_back({&shape, anomalous, 0, {}});
  if (!anomalous && !name_giver_ && !shape.columns.empty()) name_giver_ = &shape;
  if (!measure_) return;
  std::vector<std::size_t>& longest = uses_.back().longest;
  longest.reserve(shape.columns.size());
  for (const shape_column& column : shape.columns) {
    const std::size_t length = column.literal ? column.text.size() : 0;
    longest.push_back(length <= longest_measured ? length : 0);
  }
}

void table_survey::measure_values(const LogRecord& record, std::vector<std::size_t>& longest) {
  cell_reader cells(record.values);
  const std::vector<shape_column>& columns = record.shape->columns;
  for (std::size_t i = 0; i < columns.size(); ++i) {
    if (columns[i].literal) continue;
    const std::size_t length = cells.next().text.size();
    value_bytes_ += length;
    if (length > longest[i] && length <= longest_measured) longest[i] = length;
  }
}

}  // namespace zanvik
