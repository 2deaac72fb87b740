// The tokens of binary XML: recognisers, and the layouts of what follows a token byte.
//
// A token byte has its number in the low four bits; 0x40 means that more data follows. Every
// function takes the chunk and a chunk offset, reads through the chunk's cursor, and reports a
// token that does not fully exist as not recognised. Lengths are in bytes.
//
// On-disk layouts, the token byte first; an "offset" points to a name entry in the chunk, 4 bytes:
//   open element         id 2, size of the element 4, offset; or without the id; or size, inline
//                        name. After the name, with 0x40, the size of the attributes 4
//   value                type 1, count of units 2, UTF-16
//   attribute, entity    offset; or inline name
//   character reference  code 2
//   substitution         number of the slot 2, type 1
//   template instance    version 1, template id 4, chunk offset of the definition 4; usually
//                        preceded by a fragment header
//   fragment header      1, 1, 0
// A name entry is a link to the next one 4, a hash 2 and a count of units 2, then UTF-16; an inline
// name is the same without the link. A name that is used for the first time directly follows its
// offset.
#pragma once

#include <cstdint>
#include <optional>

#include "evtx/bxml/bxml_memory.h"
#include "evtx/container/chunk.h"

namespace zanvik {

// The one fragment header that is accepted: token 0x0F, then 1, 1, 0.
inline constexpr std::uint32_t expected_fragment = 0x0001010f;

enum bxml_token : std::uint8_t {
  token_end_of_stream = 0,
  token_open_element = 1,
  token_close_start = 2,
  token_close_empty = 3,
  token_end_element = 4,
  token_value = 5,
  token_attribute = 6,
  token_character_reference = 8,
  token_entity_reference = 9,
  token_template_instance = 12,
  token_normal_substitution = 13,
  token_optional_substitution = 14,
  token_fragment_header = 15,
};
inline constexpr std::uint8_t token_more = 0x40;

// True for a byte that the recognisers accept: bit 0x20 is not accepted, 0x40 is the more-data
// flag.
inline bool is_acceptable(std::uint8_t byte) { return byte < 32 || (byte >= 64 && byte < 96); }
inline bool is_token(std::uint8_t byte, bxml_token token) {
  return (byte & 0x1f) == token && is_acceptable(byte);
}

// A template instance's head: where its definition is, and how long the head is.
struct instance_head {
  std::uint32_t template_id = 0;
  std::uint32_t definition = 0;  // chunk offset
  std::uint32_t length = 0;      // 14 with a fragment header, 10 without
};

// The head of a fragment header and template instance at `offset`; its template id is not 0.
std::optional<instance_head> fragment_instance_at(const chunk_view& chunk, std::uint64_t offset);
// The same, with a definition not above `size`, which is not tested if it exceeds 32 bits.
std::optional<instance_head> fragment_instance_in(const chunk_view& chunk, std::uint64_t offset,
                                                  std::uint64_t size);
// The head of a template instance without fragment header.
std::optional<instance_head> bare_instance_at(const chunk_view& chunk, std::uint64_t offset);
// The head that a nested value starts with, in either form.
std::optional<instance_head> nested_instance_at(const chunk_view& chunk, std::uint64_t offset);

// The name entry (link, hash, count, UTF-16 name) at `offset`, its text added to `texts`. The name
// is read if its count stays within the block.
counted_text name_entry_at(const chunk_view& chunk, std::uint64_t offset, text_arena& texts);
// The inline name (hash, count, UTF-16 name) at `offset`, read if its count is at most `bound`.
counted_text inline_name_at(const chunk_view& chunk, std::uint64_t offset, std::int64_t bound);
// UTF-16 text of `units` at `offset`, read if `read` is set; `head_length` bytes precede it.
counted_text counted_text_at(const chunk_view& chunk, std::uint64_t offset, std::uint64_t units,
                             bool read, std::uint64_t head_length, text_arena& texts);

// An open start element, an attribute or an entity reference.
struct named_token {
  counted_text name;
  std::uint64_t length = 0;       // of the whole token; 0 if no layout accepts it
  std::uint64_t head_length = 0;  // of the token without a name inside it
  std::uint32_t element_size = 0;
  bool name_past_end = false;  // a name by offset that would reach past the bound: ends the stream
};

named_token element_at(const chunk_view& chunk, std::uint64_t offset);
named_token attribute_at(const chunk_view& chunk, std::uint64_t offset);
named_token entity_at(const chunk_view& chunk, std::uint64_t offset);

}  // namespace zanvik
