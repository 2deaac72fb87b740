#include "events/log_record.h"

#include <algorithm>
#include <functional>
#include <new>
#include <type_traits>
#include <unordered_map>
#include <utility>

namespace zanvik {

column_map columns_of(const LogRecord& record) {
  column_map columns;
  if (!record.shape) return columns;
  cell_reader cells(record.values);
  for (const shape_column& column : record.shape->columns) {
    columns.emplace(column.name, column.literal ? column.text : cells.next().text);
  }
  return columns;
}

namespace {

bool is_earlier(const LogRecord* a, const LogRecord* b) { return a->time < b->time; }

// Equal times keep their order.
void sort_by_time(std::span<LogRecord* const> records, std::vector<LogRecord*>& sorted) {
  // The times are beside the records while these are sorted, because looking each one up costs
  // more.
  std::vector<std::pair<std::uint64_t, LogRecord*>> timed;
  timed.reserve(records.size());
  for (LogRecord* record : records) timed.emplace_back(record->time, record);
  std::stable_sort(timed.begin(), timed.end(),
                   [](const auto& a, const auto& b) { return a.first < b.first; });
  sorted.clear();
  sorted.reserve(timed.size());
  for (const auto& [time, record] : timed) sorted.push_back(record);
}

}  // namespace

record_container::record_container() : shared_(std::make_shared<shared_parts>()) {}

void record_container::add(const LogRecord& record) {
  static_assert(std::is_trivially_destructible_v<LogRecord> &&
                alignof(LogRecord) <= alignof(std::max_align_t));
  char* const place = record_arena_.reserve(sizeof(LogRecord));
  LogRecord& added = *::new (place) LogRecord(record);
  record_arena_.keep(sizeof(LogRecord));
  add_in_place(&added);
  if (!added.provider) added.provider = intern_text({});
  if (!added.description) added.description = intern_text({});
  if (!added.shape) added.shape = intern_shape({});
}

void record_container::add_in_place(LogRecord* record) {
  in_order_ = in_order_ && (records_.empty() || !is_earlier(record, records_.back()));
  records_.push_back(record);
}

void record_container::add(record_batch batch) {
  if (batch.records.empty()) return;
  if (batch.shared != shared_) use_own_parts(batch);
  const auto added = static_cast<std::ptrdiff_t>(batch.records.size());
  records_.insert(records_.end(), batch.records.begin(), batch.records.end());
  if (in_order_) {
    // Those that belong before records of earlier batches: few, or all are sorted in the end.
    const auto middle = records_.end() - added;
    const auto first = std::upper_bound(records_.begin(), middle, *middle, is_earlier);
    in_order_ = middle - first <= 4 * added;
    if (in_order_ && first != middle) {
      std::inplace_merge(first, middle, records_.end(), is_earlier);
    }
  }
  for (record_arena::held_memory& memory : batch.memory) {
    // The last piece of a batch is often the first of the next one of its thread.
    batch_memory_.push_back(std::move(memory));
  }
}

void record_container::use_own_parts(record_batch& batch) {
  std::unordered_map<const void*, const void*> known;
  const auto own = [&](const auto*& part, const auto& intern) {
    const void*& found = known[part];
    if (!found) found = intern(*part);
    part = static_cast<std::remove_reference_t<decltype(part)>>(found);
  };
  const auto text = [this](const std::string& old) { return intern_text(old); };
  const auto shape = [this](const record_shape& old) { return intern_shape(old); };
  for (LogRecord* record : batch.records) {
    own(record->provider, text);
    own(record->description, text);
    own(record->shape, shape);
  }
}

record_batch record_container::take() {
  record_batch batch;
  if (!in_order_) {
    sort_by_time(records_, batch.records);
    records_.clear();
  } else {
    batch.records.swap(records_);
  }
  in_order_ = true;
  batch.shared = shared_;
  if (batch.records.empty()) return batch;
  arena_.share(batch.memory);
  record_arena_.share(batch.memory);
  return batch;
}

std::span<const LogRecord* const> record_container::in_time_order() {
  if (in_order_) return records_;  // as logs usually are
  if (ordered_.size() != records_.size()) sort_by_time(records_, ordered_);
  return ordered_;
}

void record_container::clear() {
  forget_shared();
  clear_records();
}

void record_container::forget_shared() {
  if (shared_.use_count() == 1) {
    shared_->clear();
  } else {
    shared_ = std::make_shared<shared_parts>();
  }
}

void record_container::clear_records() {
  if (shared_->is_full()) forget_shared();
  records_.clear();
  ordered_.clear();
  in_order_ = true;
  arena_.clear();
  record_arena_.clear();
  batch_memory_.clear();
}

}  // namespace zanvik
