#include "evtx/templates/body_scan.h"

#include <cstring>

#include "evtx/bxml/bxml_tokens.h"

namespace zanvik {
namespace {

constexpr std::uint64_t name_head_bytes = 8;  // link, hash, count
constexpr std::uint64_t name_link_bytes = 4;
constexpr std::uint64_t name_units_at = 6;
constexpr std::uint64_t name_offset_bytes = 4;
constexpr std::uint64_t field_with_id = 7;  // offset of its name in an element with an id

// Maximum bytes of names in one body, each counted as often as it is used. Comparing a copy reads
// all of them. Bodies of real logs use some 3,000 bytes.
constexpr std::uint64_t most_name_bytes = evtx_layout::chunk_bytes;

// An element without an id differs from one with an id in its name's offset, as long as the size
// and offset that are first tried lie past the block.
constexpr std::uint64_t least_offset_without_id = evtx_layout::chunk_header_bytes;
constexpr std::uint64_t largest_block_without_id = least_offset_without_id << 16;

// Whether a name entry is so far inside the chunk that every bound on it holds, in any block.
bool name_fits(std::uint64_t offset, std::uint64_t name_bytes) {
  return offset <= evtx_layout::chunk_bytes &&
         name_head_bytes + name_bytes + 2 <= evtx_layout::chunk_bytes - offset;
}

bool form_is_certain(const chunk_view& chunk, std::uint64_t name_offset) {
  return name_offset >= least_offset_without_id && chunk.bound < largest_block_without_id;
}

bool is_same_name(const body_copy& copy, const name_place& place, const chunk_view& chunk,
                  std::uint64_t body) {
  const std::uint64_t behind = body + place.field + name_offset_bytes;
  const std::uint64_t offset = chunk.bytes.at_or_zero<std::uint32_t>(body + place.field);
  if ((offset == behind) != place.here || !name_fits(offset, place.name_bytes)) return false;
  if (place.without_id && !form_is_certain(chunk, offset)) return false;
  if (place.here) return true;
  const auto name = chunk.bytes.bytes_at(offset + name_head_bytes, place.name_bytes);
  return chunk.bytes.at_or_zero<std::uint16_t>(offset + name_units_at) * 2u == place.name_bytes &&
         (name.empty() ||
          std::memcmp(name.data(), copy.names.data() + place.name, name.size()) == 0);
}

}  // namespace

bool is_copy(const body_copy& copy, const chunk_view& chunk, std::uint64_t body) {
  const auto bytes = chunk.bytes.bytes_at(body, copy.bytes.size());
  if (bytes.size() != copy.bytes.size()) return false;
  std::size_t at = 0;
  const auto same_up_to = [&](std::size_t end) {
    return end == at || std::memcmp(bytes.data() + at, copy.bytes.data() + at, end - at) == 0;
  };
  for (const name_place& place : copy.places) {
    if (!same_up_to(place.field) || !is_same_name(copy, place, chunk, body)) return false;
    // Past the offset, and past the chain link of a name that is here.
    at = place.field + name_offset_bytes + (place.here ? name_link_bytes : 0);
  }
  return same_up_to(bytes.size());
}

bool body_scan::scan(const chunk_view& chunk, std::uint64_t body, std::uint32_t size) {
  chunk_ = &chunk;
  body_ = at_ = body;
  end_ = body + size;
  name_bytes_ = 0;
  normal_.clear();
  names_.clear();
  places_.clear();
  if (size < 4 || chunk.bytes.at<std::uint32_t>(at_) != expected_fragment) return false;
  at_ += 4;
  while (at_ < end_) {
    const auto token = chunk.bytes.at_or_zero<std::uint8_t>(at_);
    if (token == token_end_of_stream) return true;
    if (!scan_token(token)) return false;
  }
  return false;
}

body_copy body_scan::take_copy(const chunk_view& chunk, std::uint64_t body, std::uint32_t size) {
  const auto bytes = chunk.bytes.bytes_at(body, size);
  return {0, {bytes.begin(), bytes.end()}, names_, places_};
}

// Token bytes with other flags are left to the decoder.
bool body_scan::scan_token(std::uint8_t token) {
  constexpr std::uint64_t offset_head = 5;  // token, offset of the name
  switch (token & ~token_more) {
    case token_open_element:
      return scan_element(token);
    case token_attribute:
      return scan_name(offset_head, 1, false, 0);
    case token_entity_reference:
      // Two zero bytes distinguish the layout with an offset from the one with an inline name.
      if (chunk_->bytes.at_or_zero<std::uint16_t>(at_ + 3) != 0) return false;
      return scan_name(offset_head, 1, false, 0);
    case token_value:
      return scan_value();
    case token_character_reference:
      return take(3);
    case token_normal_substitution:
    case token_optional_substitution:
      return (token & token_more) == 0 && take(4);
    case token_close_start:
    case token_close_empty:
    case token_end_element:
      return (token & token_more) == 0 && take(1);
    default:
      return false;
  }
}

bool body_scan::scan_element(std::uint8_t token) {
  constexpr std::uint64_t longest_head = 11;
  if (longest_head > end_ - at_) return false;
  const std::uint64_t tail = (token & token_more) != 0 ? 4 : 0;  // size of the attributes
  const byte_cursor& bytes = chunk_->bytes;
  if (bytes.at_or_zero<std::uint32_t>(at_ + 3) <= evtx_layout::chunk_bytes &&
      bytes.at_or_zero<std::uint32_t>(at_ + 7) < evtx_layout::chunk_bytes) {
    return scan_name(longest_head, field_with_id, false, tail);
  }
  constexpr std::uint64_t head_without_id = 9;
  return bytes.at_or_zero<std::uint32_t>(at_ + 1) <= evtx_layout::chunk_bytes &&
         form_is_certain(*chunk_, bytes.at_or_zero<std::uint32_t>(at_ + 5)) &&
         scan_name(head_without_id, 5, true, tail);
}

bool body_scan::scan_value() {
  constexpr std::uint64_t head = 4;
  const std::uint64_t length = head + 2u * chunk_->bytes.at_or_zero<std::uint16_t>(at_ + 2);
  if (length + 2 > end_ - at_) return false;  // the decoder looks for a NUL after the text
  const bool has_nul = chunk_->bytes.at_or_zero<std::uint16_t>(at_ + length) == 0;
  return take(length + (has_nul ? 2 : 0));
}

// A token of `head` bytes with a name, whose offset is at byte `field`, and `tail` bytes after the
// name.
bool body_scan::scan_name(std::uint64_t head, std::uint64_t field, bool without_id,
                          std::uint64_t tail) {
  const byte_cursor& bytes = chunk_->bytes;
  if (head > end_ - at_) return false;
  name_place place;
  place.field = static_cast<std::uint32_t>(at_ + field - body_);
  place.without_id = without_id;
  const std::uint64_t offset = bytes.at_or_zero<std::uint32_t>(at_ + field);
  place.here = offset == at_ + head;
  const auto units = bytes.at<std::uint16_t>(offset + name_units_at);
  if (!units || !name_fits(offset, 2u * *units)) return false;
  place.name_bytes = 2u * *units;
  name_bytes_ += place.name_bytes;
  if (name_bytes_ > most_name_bytes) return false;
  std::uint64_t length = head;
  if (place.here) {
    const std::uint64_t name_length = name_head_bytes + place.name_bytes;
    if (name_length + 2 > end_ - at_ - head) return false;
    length += name_length + (bytes.at_or_zero<std::uint16_t>(offset + name_length) == 0 ? 2 : 0);
  }
  if (tail > end_ - at_ - length) return false;
  // The token, its layout and dependency id, the name's length and the name.
  note(at_, 1);
  if (field == field_with_id) note(at_ + 1, 2);
  const std::uint16_t words[2] = {static_cast<std::uint16_t>(head), *units};
  const auto word_bytes = std::as_bytes(std::span(words));
  normal_.insert(normal_.end(), word_bytes.begin(), word_bytes.end());
  note(offset + name_head_bytes, place.name_bytes);
  if (!place.here) {
    const auto name = bytes.bytes_at(offset + name_head_bytes, place.name_bytes);
    place.name = static_cast<std::uint32_t>(names_.size());
    names_.insert(names_.end(), name.begin(), name.end());
  }
  places_.push_back(place);
  at_ += length + tail;
  return true;
}

// Copies `length` bytes unchanged.
bool body_scan::take(std::uint64_t length) {
  if (length > end_ - at_) return false;
  note(at_, length);
  at_ += length;
  return true;
}

void body_scan::note(std::uint64_t at, std::uint64_t length) {
  const auto bytes = chunk_->bytes.bytes_at(at, length);
  normal_.insert(normal_.end(), bytes.begin(), bytes.end());
}

}  // namespace zanvik
