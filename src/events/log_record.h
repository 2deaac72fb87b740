// `LogRecord`, the one parsed record that both readers' selections fill and that statistics and
// writers use, and the container of a run's selected records.
//
// A record is small: its columns' names, and the values that its template has as literals, are in a
// shared `record_shape`; its own values are in a packed block (value_block.h). Strings are shared
// too. Everything a record points to belongs to its `record_container`, and is valid until that is
// cleared.
#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>
#include <map>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "base/hash_mix.h"
#include "base/limits.h"
#include "events/record_arena.h"
#include "events/value_block.h"

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
  std::size_t value_count = 0;     // columns that are not literals
  // Set by the container.
  std::size_t repeated_bytes = 0;  // of each of its records
  std::uint64_t id = 0;            // a unique number
};

// Bits of `LogRecord::flags`.
enum record_flag : std::uint32_t {
  record_plain_or_slack = 0x01,  // decoded without a template, or found in slack
  record_cut = 0x02,             // a slot of a slack record was cut at the chunk's end
  record_outside_range = 0x08,   // the number lies outside the chunk's declared range
  record_inside_range = 0x40,    // the number lies inside it
};
// All flags that a normal record may have.
inline constexpr std::uint32_t record_ordinary = record_plain_or_slack | record_inside_range;
// Any of these puts a star in the column "del".
inline constexpr std::uint32_t record_starred = 0x3f;

struct LogRecord {
  std::int32_t report_entry_id = 0;  // which command kept the record
  std::uint32_t level = 0;           // "Level" of an .evtx record, event type of an .evt record
  std::uint64_t time = 0;            // FILETIME
  std::uint64_t event_id = 0;
  std::uint64_t record_number = 0;
  std::uint64_t file_offset = 0;  // of the record in its file, in bytes; 0 for an .evt record
  std::uint32_t flags = 0;        // of `record_flag`
  bool is_evtx = true;
  const std::string* provider = nullptr;     // never null in a container
  const std::string* description = nullptr;  // the command's caption; never null in a container
  const record_shape* shape = nullptr;       // never null in a container
  const char* values = nullptr;              // the block; null when shape->value_count is 0
};

// A record's columns with their values, one by one: for code that need not be fast.
using column_map = std::map<std::string, std::string>;
column_map columns_of(const LogRecord& record);

// The selected records of a run. It behaves like an ordered multimap from time to record (equal
// times in order of insertion), but is a vector that is sorted when needed.
class record_container {
 public:
  record_container();
  record_container(const record_container&) = delete;
  record_container& operator=(const record_container&) = delete;

  bool empty() const { return records_.empty(); }
  std::size_t size() const { return records_.size(); }

  // Adds a copy. Null strings and a null shape become empty ones of this container.
  void add(const LogRecord& record);

  // The record added last; there is one.
  const LogRecord& last() const { return *records_.back(); }

  // The records by ascending time, equal times in order of insertion. Valid until the next `add` or
  // `clear`.
  std::span<const LogRecord* const> in_time_order();

  // Forgets the records and everything they point to: shapes, strings and blocks.
  void clear();
  // Forgets the records and their blocks. Shapes and strings are kept, because the next records
  // probably share them, until they exceed the limits: then this is `clear`.
  void clear_records();
  // A unique number, another one after each `clear`: caches of what points to shapes or strings
  // belong to it.
  std::uint64_t contents_id() const { return contents_id_; }

  // The container's own copy of a text or a shape; equal ones are one object, so they can be
  // compared by address.
  const std::string* intern_text(std::string_view text);
  const record_shape* intern_shape(record_shape shape);
  // The same for a shape without literals: the names of its columns, in order.
  const record_shape* intern_names(std::span<const std::string_view> names);
  record_arena& arena() { return arena_; }

  // What records repeat of their templates is counted and compared with the size of their log, as
  // far as it has been read. Without a log there is no limit.
  void start_log() { repeats_left_ = limits::repeated_bytes_at_least; }
  void add_log_bytes(std::uint64_t bytes) {
    repeats_left_ += limits::repeated_bytes_per_byte * static_cast<std::int64_t>(bytes);
  }
  bool can_repeat(std::size_t bytes) const {
    return static_cast<std::int64_t>(bytes) <= repeats_left_;
  }
  // Charges the bytes unless they are too many.
  [[nodiscard]] bool repeat(std::size_t bytes) {
    if (!can_repeat(bytes)) return false;
    repeats_left_ -= static_cast<std::int64_t>(bytes);
    return true;
  }

 private:
  std::vector<const LogRecord*> records_;
  std::vector<const LogRecord*> ordered_;
  std::unordered_map<std::string, std::unique_ptr<std::string>, keyed_text_hash, std::equal_to<>>
      texts_;
  std::unordered_multimap<std::size_t, std::unique_ptr<record_shape>> shapes_;
  std::size_t shared_bytes_ = 0;  // of the texts and of what shapes hold
  record_arena arena_;            // of the blocks
  record_arena record_arena_;     // of the records
  std::uint64_t contents_id_;
  std::int64_t repeats_left_ = std::numeric_limits<std::int64_t>::max() / 2;
};

}  // namespace zanvik
