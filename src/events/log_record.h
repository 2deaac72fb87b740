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
#include <utility>
#include <vector>

#include "base/limits.h"
#include "events/record_arena.h"
#include "events/shared_parts.h"
#include "events/value_block.h"

namespace zanvik {

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

// Records of a part of a log with all they point to, made on any thread.
struct record_batch {
  std::vector<LogRecord*> records;  // by ascending time
  std::vector<record_arena::held_memory> memory;
  std::shared_ptr<shared_parts> shared;
};

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
  // Adds records that share their parts with this container, or did before `renew_shared`.
  void add(record_batch batch);

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
  std::uint64_t contents_id() const { return shared_->id(); }

  // From now on shapes and strings are those of `other`, so records of both can be compared. There
  // are no records.
  void share_with(const record_container& other) { shared_ = other.shared_; }
  // The records for another container that shares with this one, which has none afterwards.
  record_batch take();

  // The container's own copy of a text or a shape; equal ones are one object, so they can be
  // compared by address.
  const std::string* intern_text(std::string_view text) { return shared_->text(text); }
  const record_shape* intern_shape(record_shape shape) { return shared_->shape(std::move(shape)); }
  // The same for a shape without literals: the names of its columns, in order.
  const record_shape* intern_names(std::span<const std::string_view> names) {
    return shared_->names(names);
  }
  record_arena& arena() { return arena_; }

  // What records repeat of their templates is counted for each block of a log and compared with its
  // size. Before the first block there is no limit.
  void start_block(std::uint64_t bytes) {
    repeats_left_ = limits::repeated_bytes_at_least +
                    limits::repeated_bytes_per_byte * static_cast<std::int64_t>(bytes);
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
  void add_in_place(LogRecord* record);
  void forget_shared();
  void use_own_parts(record_batch& batch);

  std::vector<LogRecord*> records_;
  bool in_order_ = true;  // by time
  std::vector<LogRecord*> ordered_;
  std::shared_ptr<shared_parts> shared_;
  record_arena arena_;         // of the blocks
  record_arena record_arena_;  // of the records
  std::vector<record_arena::held_memory> batch_memory_;
  std::int64_t repeats_left_ = std::numeric_limits<std::int64_t>::max() / 2;
};

}  // namespace zanvik
