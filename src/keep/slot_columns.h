// The columns "s01" and so on, which records get from the first candidate of slack on: each own
// slot that has a text. Its values decide which of them a record has, but records of a shape mostly
// agree, so the columns are computed once for each shape and set of slots.
//
// The plain way to the same columns is `add_slot_columns` (slack_columns.h); tests compare the two.
#pragma once

#include <bitset>
#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "base/hash_mix.h"
#include "events/log_record.h"
#include "evtx/record_fields.h"

namespace zanvik {

class slot_columns {
 public:
  // Adds the columns of the record's own slots to those of `kept`, in the memory of `records`, and
  // adds the slots' marks. Returns false, with `kept` unchanged, for a record with more slots than
  // tables have; only crafted ones do.
  bool add(LogRecord& kept, const record_fields& record, record_container& records);

  // Forgets everything that points into the container, which is about to be cleared.
  void clear() { merged_.clear(); }

 private:
  static constexpr std::size_t most_slots = 128;

  // A slot with a text: its number among the own ones from 1, and the end of its text in `text_`.
  struct found_slot {
    unsigned number;
    std::size_t end;
  };
  struct merged_key {
    std::uint64_t shape_id = 0;
    std::bitset<most_slots> slots;

    bool operator==(const merged_key&) const = default;
  };
  struct key_hash {
    std::size_t operator()(const merged_key& key) const {
      return static_cast<std::size_t>(
          keyed_hash(key.shape_id, std::hash<std::bitset<most_slots>>{}(key.slots)));
    }
  };
  // Where the value of a column comes from.
  struct value_source {
    bool of_slot = false;
    std::size_t index = 0;  // of `found_`, else of the block's cells
  };
  struct merged_shape {
    const record_shape* shape = nullptr;
    std::vector<value_source> sources;  // one for each column that is not a literal
  };

  bool collect(const record_fields& record, std::uint32_t& flags);
  const merged_shape& merged_with(const record_shape& base, record_container& records);
  merged_shape merge(const record_shape& base, record_container& records) const;
  void write_block(LogRecord& kept, const merged_shape& merged, record_container& records);
  std::string_view slot_text(std::size_t index) const;

  std::unordered_map<merged_key, merged_shape, key_hash> merged_;
  std::string text_;  // of the record's slots, one after the other
  std::vector<found_slot> found_;
  std::bitset<most_slots> slots_;
  std::vector<value_cell> cells_;
};

}  // namespace zanvik
