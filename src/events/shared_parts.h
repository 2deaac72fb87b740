// Texts and shapes that records share, each kept once: equal ones are one object, so they can be
// compared by address. Several threads may use it at once. What it returns lives as long as it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <span>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "base/hash_mix.h"
#include "base/unique_number.h"

namespace zanvik {

// One column of a record: its name, and its value if that is the same for all records.
struct shape_column {
  std::string name;
  bool literal = false;  // `text` is the value; otherwise it is the next cell of the block
  std::string text;

  bool operator==(const shape_column&) const = default;
};

// The cost of a column where it is repeated, besides its name and its literal: its separators, and
// its place in a shape.
inline constexpr std::size_t repeated_column_bytes = 16;

// The columns of a record, in byte order of their names, each name once. The record's block has one
// cell for each column that is not a literal, in the same order.
struct record_shape {
  std::vector<shape_column> columns;
  std::size_t value_count = 0;  // columns that are not literals
  // Set by the container.
  std::size_t repeated_bytes = 0;  // of each of its records
  std::uint64_t id = 0;            // a unique number
};

class shared_parts {
 public:
  shared_parts() = default;
  shared_parts(const shared_parts&) = delete;
  shared_parts& operator=(const shared_parts&) = delete;

  const std::string* text(std::string_view text);
  const record_shape* shape(record_shape shape);
  // The same for a shape without literals: the names of its columns, in order.
  const record_shape* names(std::span<const std::string_view> names);

  // It holds more than the limits allow.
  bool is_full() const;
  // Forgets everything; for whoever alone uses it.
  void clear();
  // A unique number, another one after each `clear`.
  std::uint64_t id() const { return id_; }

 private:
  const record_shape* add_shape(std::size_t hash, record_shape shape);

  mutable std::mutex mutex_;
  std::unordered_map<std::string, std::unique_ptr<std::string>, keyed_text_hash, std::equal_to<>>
      texts_;
  std::unordered_multimap<std::size_t, std::unique_ptr<record_shape>> shapes_;
  std::size_t bytes_ = 0;  // of the texts and of what shapes hold
  std::uint64_t id_ = unique_number();
};

}  // namespace zanvik
