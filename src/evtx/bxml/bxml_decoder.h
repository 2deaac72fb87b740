// The binary XML decoder: walks one stream inside a chunk, composes XML-like text and collects
// name-value fields if the caller wants them, and names the slots that substitutions refer to.
//
// It never trusts a count: text is bounded before it is read, an unknown token ends the stream, and
// what was read before it is kept. Nested streams are decoded by the same function, at most
// `limits::nesting_depth` deep and within the chunk's work budget. The budget is charged for the
// bytes that are read, wherever they are: a token without its name, a name or value up to its NUL.
//
// Records of known templates do not come here one by one: quick_records.h runs this decoder once
// for each template.
#pragma once

#include <cstdint>
#include <limits>
#include <map>
#include <memory_resource>
#include <string>
#include <vector>

#include "evtx/bxml/bxml_memory.h"
#include "evtx/container/chunk.h"

namespace zanvik {

// One value of a substitution array, and what decoding found out about it.
struct slot_entry {
  std::uint32_t offset = 0;  // of the value in the chunk; an empty value has one too, and size 0
  std::uint16_t size = 0;    // bytes
  std::uint16_t type = 0;    // see value_text.h
  std::uint32_t flags = 0;   // `slot_cut`
  std::string name;          // the name in the template's body; empty until it is read
  bool composed = false;     // `text` is the text of nested plain binary XML
  std::string text;
  std::vector<slot_entry> children;  // values of a nested template
};
inline constexpr std::uint32_t slot_cut = 2;  // the value was cut at the chunk's end

// A field found in the token stream: type word and value.
struct field_value {
  std::uint16_t type = 0;
  std::string text;
  std::uint64_t repeats = 0;  // keys "name [1]" to "name [repeats]" are used
};
// Its nodes may use memory of the reader.
using field_map = std::pmr::map<std::string, field_value, std::less<>>;

// Where in the composed text the value of a slot is.
struct slot_place {
  std::size_t at = 0;
  std::uint32_t slot = 0;
};

// Where a decode starts and in which mode.
struct bxml_cursor {
  const chunk_view& chunk;
  std::uint64_t position = 0;                // chunk offset
  std::vector<slot_entry>* slots = nullptr;  // to be named and written; null if there are none
  // The stream is a template's body: its nested slots are decoded elsewhere.
  bool template_body = false;
  // Charged for the bytes walked; a member of the chunk's budget.
  std::int64_t* budget = nullptr;
  unsigned depth = 0;  // of this stream in others
  std::vector<slot_place>* places =
      nullptr;  // extended by those in this stream; null if not needed
};

inline constexpr std::uint64_t no_limit = std::numeric_limits<std::uint64_t>::max();

struct bxml_result {
  std::uint64_t element_bytes = 0;  // sum of the element sizes seen, 0 if there was no element
  bool any_fields = false;          // the stream has fields, wanted or not
};

// Decodes the stream at `cursor.position`, of at most `limit` bytes (`no_limit`: the block).
//   text    is extended by the composed text; null if not needed.
//   fields  cleared, then filled; null if not needed.
bxml_result decode_bxml(std::string* text, field_map* fields, const bxml_cursor& cursor,
                        std::uint64_t limit = no_limit);

// Bits of `element_item::word` besides the token byte.
inline constexpr std::uint16_t word_second_value = 0x10;  // a value that follows a value
inline constexpr std::uint16_t word_in_data = 0x100;      // inside EventData or UserData
inline constexpr std::uint16_t word_chained = 0x200;      // part of a run of values and references

// Numbers of the unnamed and named data of one decode.
struct data_counters {
  unsigned data_index = 0;
  unsigned current_data_index = 0;
};

// Makes fields of the items of one element (oldest first; there are at least two), and empties
// `items`. `no_slots`: the stream has no slot table.
void flush_items(std::vector<element_item>& items, field_map& fields, data_counters& counters,
                 bool no_slots);

// Adds system fields that `fields` lacks from the slot table of a stream that starts at `start`
// with a fragment header and template instance, by the order of the standard system template.
void fill_system_from_slots(field_map& fields, const chunk_view& chunk, std::uint64_t start);

}  // namespace zanvik
