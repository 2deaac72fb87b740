// What the first pass over the records of a table finds out: their shapes, how wide their values
// are, and which columns there must be. Parts of a table can be surveyed on their own and joined.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <unordered_map>
#include <vector>

#include "events/log_record.h"

namespace zanvik {

// Whether any flag says more than that the record was decoded normally and is in range.
inline bool is_anomalous(const LogRecord& record) { return (record.flags & ~record_ordinary) != 0; }

// Numbers the distinct pairs of a shape and whether its records are anomalous, from 0.
class shape_index {
 public:
  // The number of the record's pair, which is size() - 1 if it is new.
  std::size_t of(const LogRecord& record) { return of(*record.shape, is_anomalous(record)); }
  std::size_t of(const record_shape& shape, bool anomalous) {
    last& recent = last_[anomalous];
    if (recent.shape_id != shape.id) recent = {shape.id, find(shape.id, anomalous)};
    return recent.number;
  }
  std::size_t size() const { return count_; }

 private:
  struct last {
    std::uint64_t shape_id = 0;
    std::size_t number = 0;
  };
  std::size_t find(std::uint64_t shape_id, bool anomalous);

  std::unordered_map<std::uint64_t, std::size_t> numbers_[2];  // by shape ID
  std::size_t count_ = 0;
  last last_[2];
};

class table_survey {
 public:
  // `measure`: lengths of values are needed, for a padded table.
  explicit table_survey(bool measure) : measure_(measure) {}

  void add(std::span<const LogRecord* const> records);
  // Adds what was found of the records that follow.
  void add(const table_survey& following);

  // The records of one shape, ordinary or anomalous ones.
  struct shape_use {
    const record_shape* shape = nullptr;
    bool anomalous = false;
    std::size_t records = 0;
    std::vector<std::size_t> longest;  // of the values of each column, if they count
  };
  const std::vector<shape_use>& uses() const { return uses_; }  // in order of appearance

  bool measures() const { return measure_; }
  std::size_t records() const { return records_; }
  std::size_t value_bytes() const { return value_bytes_; }  // of all, as far as they are measured
  bool has_provider() const { return has_provider_; }
  // Shape of the first ordinary record with a field; null if there is none.
  const record_shape* name_giver() const { return name_giver_; }
  std::size_t provider_width() const { return provider_width_; }
  std::size_t description_width() const { return description_width_; }

 private:
  void add(const LogRecord& record);
  void add_use(const record_shape& shape, bool anomalous);
  void measure_values(const LogRecord& record, std::vector<std::size_t>& longest);

  bool measure_;
  shape_index shapes_;
  std::vector<shape_use> uses_;
  std::size_t records_ = 0;
  std::size_t value_bytes_ = 0;
  bool has_provider_ = false;
  const record_shape* name_giver_ = nullptr;
  std::size_t provider_width_ = 13;
  std::size_t description_width_ = 0;
};

}  // namespace zanvik
