#include "evtx/templates/template_bodies.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include "base/hash_mix.h"
#include "evtx/bxml/bxml_tokens.h"

namespace zanvik {
namespace {

// Copies of one template that are told apart; more are decoded each time.
constexpr std::size_t variants_per_template = 64;
constexpr std::uint64_t name_head_bytes = 8;  // link, hash, count
constexpr std::uint64_t name_link_bytes = 4;
constexpr std::uint64_t name_units_at = 6;  // the count, in a name
constexpr std::uint64_t name_offset_bytes = 4;
constexpr std::uint64_t without_id_field = 5;  // where an element without id has its name's offset

// Whether a name entry lies so far inside the chunk that every bound on it holds, in any block.
bool name_fits(std::uint64_t offset, std::uint64_t name_bytes) {
  constexpr std::uint64_t least_bytes = 10;
  return offset + std::max(name_head_bytes + name_bytes, least_bytes) <= evtx_layout::chunk_bytes;
}

// Length of a token that has no name; 0 for one that has, or that is not known.
std::uint64_t nameless_length(const chunk_view& chunk, std::uint64_t at, std::uint8_t token) {
  if (!is_acceptable(token)) return 0;
  switch (token & 0x1f) {
    case token_close_start:
    case token_close_empty:
    case token_end_element:
      return 1;
    case token_value: {
      const auto units = chunk.bytes.at_or_zero<std::uint16_t>(at + 2);
      return counted_text_at(chunk, at + 4, units, true, 4).length;
    }
    case token_character_reference:
      return 3;
    case token_normal_substitution:
    case token_optional_substitution:
      return 4;
    default:
      return 0;
  }
}

std::uint64_t key_of(const guid_bytes& guid, std::uint32_t size_record) {
  std::uint64_t half[2];
  std::memcpy(half, guid.data(), sizeof(half));
  return (half[0] ^ size_record) * hash_multiplier + half[1];
}

}  // namespace

std::uint32_t template_bodies::identify(const chunk_view& chunk, std::uint64_t definition,
                                        std::uint32_t size_record, const guid_bytes& guid) {
  const std::uint64_t body = definition + evtx_layout::definition_head_bytes;
  if (size_record > evtx_layout::chunk_bytes || body + size_record > evtx_layout::chunk_bytes) {
    return 0;
  }
  auto& variants = by_key_[key_of(guid, size_record)];
  for (const known_body& known : variants) {
    if (known.bytes.size() == size_record && is_same(known, chunk, body)) return known.id;
  }
  if (variants.size() >= variants_per_template) return 0;
  known_body learned;
  if (!learn(chunk, body, size_record, learned)) return 0;
  learned.id = ++last_id_;
  held_bytes_ += learned.bytes.size() + learned.names.size();
  return variants.emplace_back(std::move(learned)).id;
}

bool template_bodies::drop_if_full() {
  if (by_key_.size() <= limits::cached_layouts && held_bytes_ <= limits::cached_layout_bytes) {
    return false;
  }
  by_key_.clear();
  held_bytes_ = 0;
  return true;
}

bool template_bodies::is_same(const known_body& known, const chunk_view& chunk,
                              std::uint64_t body) {
  const auto bytes = chunk.bytes.bytes_at(body, known.bytes.size());
  if (bytes.size() != known.bytes.size()) return false;
  std::size_t at = 0;
  const auto same_up_to = [&](std::size_t end) {
    return end == at || std::memcmp(bytes.data() + at, known.bytes.data() + at, end - at) == 0;
  };
  for (const name_place& place : known.places) {
    if (!same_up_to(place.field) || !is_same_name(known, place, chunk, body)) return false;
    // Past the offset, and past the chain link of a name that stands here.
    at = place.field + name_offset_bytes + (place.here ? name_link_bytes : 0);
  }
  return same_up_to(bytes.size());
}

bool template_bodies::is_same_name(const known_body& known, const name_place& place,
                                   const chunk_view& chunk, std::uint64_t body) {
  const std::uint64_t behind = body + place.field + name_offset_bytes;
  const std::uint64_t offset = chunk.bytes.at_or_zero<std::uint32_t>(body + place.field);
  if ((offset == behind) != place.here || !name_fits(offset, place.name_bytes)) return false;
  const std::uint64_t element = body + place.field - without_id_field;
  if (place.form_matters && !is_element_without_id(chunk, element)) return false;
  if (place.here) return true;
  const auto name = chunk.bytes.bytes_at(offset + name_head_bytes, place.name_bytes);
  return chunk.bytes.at_or_zero<std::uint16_t>(offset + name_units_at) * 2u == place.name_bytes &&
         name.size() == place.name_bytes &&
         (name.empty() ||
          std::memcmp(name.data(), known.names.data() + place.name, name.size()) == 0);
}

// Notes where the name of `token`, which stands at `at`, is. False for a token whose layout could
// depend on where the body stands.
bool template_bodies::note_name(const chunk_view& chunk, std::uint64_t body, std::uint64_t at,
                                const named_token& token, bool is_element, known_body& known) {
  if (token.length == 0 || token.offset_field == 0 || token.name_past_end) return false;
  if (token.element_size > evtx_layout::chunk_bytes) return false;
  if (!name_fits(token.name_offset, 2 * token.name.units)) return false;
  name_place place;
  place.field = static_cast<std::uint32_t>(at + token.offset_field - body);
  place.here = token.name_offset == at + token.offset_field + name_offset_bytes;
  place.form_matters = is_element && token.offset_field == without_id_field;
  if (!place.here) {
    const auto name =
        chunk.bytes.bytes_at(token.name_offset + name_head_bytes, 2 * token.name.units);
    place.name = static_cast<std::uint32_t>(known.names.size());
    place.name_bytes = static_cast<std::uint32_t>(name.size());
    known.names.insert(known.names.end(), name.begin(), name.end());
  }
  known.places.push_back(place);
  return true;
}

// Walks the body once, as the decoder will, and notes its names. Returns false for a body that
// does not end in itself or holds anything out of the ordinary.
bool template_bodies::learn(const chunk_view& chunk, std::uint64_t body, std::uint32_t size,
                            known_body& known) {
  const byte_cursor& bytes = chunk.bytes;
  std::uint64_t at = body;
  if (bytes.at<std::uint32_t>(at) != expected_fragment) return false;
  at += 4;
  while (at < body + size) {
    const auto token = bytes.at_or_zero<std::uint8_t>(at);
    if (token == token_end_of_stream) {
      const auto copied = bytes.bytes_at(body, size);
      known.bytes.assign(copied.begin(), copied.end());
      return true;
    }
    std::uint64_t length = nameless_length(chunk, at, token);
    if (length == 0) {
      const bool is_element = is_token(token, token_open_element);
      const named_token named = is_element                         ? element_at(chunk, at)
                                : is_token(token, token_attribute) ? attribute_at(chunk, at)
                                                                   : entity_at(chunk, at);
      if (!note_name(chunk, body, at, named, is_element, known)) return false;
      length = named.length;
    }
    at += length;
  }
  return false;
}

}  // namespace zanvik
