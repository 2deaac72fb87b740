// The binary XML decoder: walks one stream inside a chunk, composes XML-like text where somebody
// wants it, names the slots that substitutions refer to, and collects name-value fields.
//
// It never trusts a count: text is bounded before it is read, an unknown token ends the stream
// without a word, and what was read up to there stays. Nested streams are decoded by the same
// function, `limits::nesting_depth` deep at the most and within the chunk's work budget.
//
// This is the plain, direct way; the records of known templates take the road of quick_records.h,
// which runs this decoder once for each template.
#pragma once

#include <cstdint>
#include <limits>
#include <map>
#include <string>
#include <vector>

#include "evtx/container/chunk.h"

namespace zanvik {

// One value of a substitution array, with what decoding found out about it.
struct slot_entry {
  std::uint32_t offset = 0;  // of the value in the chunk; an empty value has one, too, and size 0
  std::uint16_t size = 0;    // bytes
  std::uint16_t type = 0;    // see value_text.h
  std::uint32_t flags = 0;   // `slot_cut`
  std::string name;          // what the template's body calls it; empty until it does
  bool composed = false;     // `text` is the text of nested plain binary XML
  std::string text;
  std::vector<slot_entry> children;  // values of a nested template
};
inline constexpr std::uint32_t slot_cut = 2;  // the value was cut at the chunk's end

// A field found in the token stream: type word and value.
struct field_value {
  std::uint16_t type = 0;
  std::string text;
  std::uint64_t repeats = 0;  // keys "name [1]" to "name [repeats]" are taken
};
using field_map = std::map<std::string, field_value, std::less<>>;

// Where a decode starts and in which mode.
struct bxml_cursor {
  const chunk_view& chunk;
  std::uint64_t position = 0;                // chunk offset
  std::vector<slot_entry>* slots = nullptr;  // to be named and written; null for a bare stream
  // The stream is a template's body: its nested slots are decoded elsewhere.
  bool template_body = false;
  // What the bytes walked are taken from; a member of the chunk's budget.
  std::int64_t* budget = nullptr;
  unsigned depth = 0;  // of this stream in others
};

inline constexpr std::uint64_t no_limit = std::numeric_limits<std::uint64_t>::max();

// Decodes the stream at `cursor.position`, of at most `limit` bytes (`no_limit`: the block).
//   text    grows by the composed text; null throws it away.
//   fields  cleared, then filled.
// Returns the sum of the element sizes seen, 0 when no element was reached.
std::uint64_t decode_bxml(std::string* text, field_map& fields, const bxml_cursor& cursor,
                          std::uint64_t limit = no_limit);

// One name, value or reference on the decoder's deque.
struct element_item {
  std::string text;
  std::uint16_t word = 0;  // token byte, plus the bits below
};
inline constexpr std::uint16_t word_second_value = 0x10;  // a value that follows a value
inline constexpr std::uint16_t word_in_data = 0x100;      // inside EventData or UserData
inline constexpr std::uint16_t word_chained = 0x200;      // part of a run of values and references

// Numbers of the unnamed and named data of one decode.
struct data_counters {
  unsigned data_index = 0;
  unsigned current_data_index = 0;
};

// Turns the items of one element (oldest first; there are two or more) into fields, and empties
// `items`. `no_slots`: the stream has no slot table.
void flush_items(std::vector<element_item>& items, field_map& fields, data_counters& counters,
                 bool no_slots);

// Takes system fields that `fields` lacks from the slot table of a stream that starts at `start`
// with a fragment header and template instance, by the order of the standard system template.
void fill_system_from_slots(field_map& fields, const chunk_view& chunk, std::uint64_t start);

}  // namespace zanvik
