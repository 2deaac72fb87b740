#include "evtx/bxml/bxml_tokens.h"

#include <limits>

namespace zanvik {
namespace {

// A bound that a size exceeds only if the size fits in 32 bits.
bool within(std::uint64_t value, std::uint64_t size) {
  return size > std::numeric_limits<std::uint32_t>::max() || value <= size;
}

std::int64_t units_behind(std::uint64_t size, std::uint64_t offset) {
  return (static_cast<std::int64_t>(size) - static_cast<std::int64_t>(offset)) / 2;
}

enum class element_form { none, with_id, without_id, inline_name };

struct element_head {
  element_form form = element_form::none;
  std::uint32_t size = 0;
  std::uint32_t name = 0;  // chunk offset; 0 for an inline name
};

bool names_within(const chunk_view& chunk, std::uint32_t size, std::uint32_t name) {
  return within(size, chunk.bound) && within(std::uint64_t{name} + 10, chunk.bound);
}

// Layouts as in bxml_tokens.h, tried in this order; the first whose bounds hold is used.
element_head element_head_at(const chunk_view& chunk, std::uint64_t offset) {
  const byte_cursor& bytes = chunk.bytes;
  const auto token = bytes.at<std::uint8_t>(offset);
  if (!token || !is_token(*token, token_open_element)) return {};
  if (bytes.has(offset, 11)) {
    const auto size = bytes.at_or_zero<std::uint32_t>(offset + 3);
    const auto name = bytes.at_or_zero<std::uint32_t>(offset + 7);
    if (names_within(chunk, size, name)) return {element_form::with_id, size, name};
  }
  const auto size = bytes.at<std::uint32_t>(offset + 1);
  const auto name = bytes.at<std::uint32_t>(offset + 5);
  if (!size || !within(*size, chunk.bound)) return {};
  if (name && names_within(chunk, *size, *name)) return {element_form::without_id, *size, *name};
  const auto units = bytes.at<std::uint16_t>(offset + 7);
  if (units && within(2u * *units, chunk.bound) && *size >= 2u * *units + 11) {
    return {element_form::inline_name, *size, 0};
  }
  return {};
}

// A token of `head` bytes that refers to its name by a chunk offset. If the offset says that the
// name directly follows the head, it belongs to the token.
named_token token_by_offset(const chunk_view& chunk, std::uint64_t offset, std::uint64_t head,
                            std::uint32_t name_offset) {
  named_token token;
  token.name = chunk.memory->names.at(chunk, name_offset);
  token.length = token.head_length = head;
  if (name_offset == offset + head) {
    if (!token.name.present) return {};  // the rest of the token does not exist
    token.length += token.name.length;
  }
  return token;
}

// A token of `head` bytes followed by an inline name.
named_token token_with_name(const chunk_view& chunk, std::uint64_t offset, std::uint64_t head,
                            std::int64_t bound) {
  named_token token;
  token.name = inline_name_at(chunk, offset + head, bound);
  if (!token.name.present) return {};
  token.head_length = head;
  token.length = head + token.name.length;
  return token;
}

}  // namespace

std::optional<instance_head> fragment_instance_at(const chunk_view& chunk, std::uint64_t offset) {
  const byte_cursor& bytes = chunk.bytes;
  if (!bytes.has(offset, evtx_layout::fragment_instance_bytes)) return std::nullopt;
  if (bytes.at_or_zero<std::uint32_t>(offset) != expected_fragment) return std::nullopt;
  if (!is_token(bytes.at_or_zero<std::uint8_t>(offset + 4), token_template_instance)) {
    return std::nullopt;
  }
  const auto id = bytes.at_or_zero<std::uint32_t>(offset + 6);
  if (id == 0) return std::nullopt;
  return instance_head{id, bytes.at_or_zero<std::uint32_t>(offset + 10),
                       evtx_layout::fragment_instance_bytes};
}

std::optional<instance_head> fragment_instance_in(const chunk_view& chunk, std::uint64_t offset,
                                                  std::uint64_t size) {
  auto head = fragment_instance_at(chunk, offset);
  if (head && !within(head->definition, size)) return std::nullopt;
  return head;
}

std::optional<instance_head> bare_instance_at(const chunk_view& chunk, std::uint64_t offset) {
  const byte_cursor& bytes = chunk.bytes;
  if (!bytes.has(offset, evtx_layout::bare_instance_bytes)) return std::nullopt;
  if (!is_token(bytes.at_or_zero<std::uint8_t>(offset), token_template_instance)) {
    return std::nullopt;
  }
  return instance_head{bytes.at_or_zero<std::uint32_t>(offset + 2),
                       bytes.at_or_zero<std::uint32_t>(offset + 6),
                       evtx_layout::bare_instance_bytes};
}

std::optional<instance_head> nested_instance_at(const chunk_view& chunk, std::uint64_t offset) {
  if (const auto head = fragment_instance_at(chunk, offset)) return head;
  return bare_instance_at(chunk, offset);
}

counted_text counted_text_at(const chunk_view& chunk, std::uint64_t offset, std::uint64_t units,
                             bool read, std::uint64_t head_length, text_arena& texts) {
  counted_text found;
  found.present = true;
  found.units = units;
  found.length = head_length + 2 * units;
  if (!read || !chunk.bytes.has(offset, 2 * units)) return found;
  std::size_t units_read = 0;
  found.text = texts.add_utf16(chunk.bytes.bytes_at(offset, 2 * units), units_read);
  found.units_read = units_read;
  // Two zero bytes after the text belong to it.
  if (chunk.bytes.at<std::uint16_t>(offset + 2 * units) == 0) found.length += 2;
  return found;
}

counted_text name_entry_at(const chunk_view& chunk, std::uint64_t offset, text_arena& texts) {
  const auto units = chunk.bytes.at<std::uint16_t>(offset + 6);
  if (!units) return {};
  const bool fits = *units <= units_behind(chunk.bound, offset) - 4;
  return counted_text_at(chunk, offset + 8, *units, fits, 8, texts);
}

counted_text inline_name_at(const chunk_view& chunk, std::uint64_t offset, std::int64_t bound) {
  const auto units = chunk.bytes.at<std::uint16_t>(offset + 2);
  if (!units) return {};
  return counted_text_at(chunk, offset + 4, *units, *units <= bound, 4, chunk.memory->texts);
}

named_token element_at(const chunk_view& chunk, std::uint64_t offset) {
  const element_head head = element_head_at(chunk, offset);
  named_token token;
  switch (head.form) {
    case element_form::none:
      return {};
    case element_form::with_id:
      token = token_by_offset(chunk, offset, 11, head.name);
      token.name_past_end = head.name + 2 * token.name.units > chunk.bound;
      break;
    case element_form::without_id:
      token = token_by_offset(chunk, offset, 9, head.name);
      break;
    case element_form::inline_name:
      // Meant: the bound comes from the element's size where the others use an offset.
      token = token_with_name(chunk, offset, 5, units_behind(chunk.bound, head.size) - 4);
      if (token.length == 0) return {};
      break;
  }
  token.element_size = head.size;
  if (token.length != 0 && (chunk.bytes.at_or_zero<std::uint8_t>(offset) & token_more)) {
    token.length += 4;  // the size of the attribute list
    token.head_length += 4;
  }
  return token;
}

named_token attribute_at(const chunk_view& chunk, std::uint64_t offset) {
  const byte_cursor& bytes = chunk.bytes;
  const auto byte = bytes.at<std::uint8_t>(offset);
  if (!byte || !is_token(*byte, token_attribute)) return {};
  const auto name_offset = bytes.at<std::uint32_t>(offset + 1);
  if (name_offset && within(*name_offset, chunk.bound)) {
    named_token token = token_by_offset(chunk, offset, 5, *name_offset);
    if (!within(std::uint64_t{*name_offset} + 10, chunk.bound)) token.name.text = {};
    return token;
  }
  return token_with_name(chunk, offset, 1, units_behind(chunk.bound, offset) - 2);
}

named_token entity_at(const chunk_view& chunk, std::uint64_t offset) {
  const byte_cursor& bytes = chunk.bytes;
  const auto byte = bytes.at<std::uint8_t>(offset);
  const auto discriminator = bytes.at<std::uint16_t>(offset + 3);
  if (!byte || !discriminator || !is_token(*byte, token_entity_reference)) return {};
  if (*discriminator == 0) {
    return token_by_offset(chunk, offset, 5, bytes.at_or_zero<std::uint32_t>(offset + 1));
  }
  return token_with_name(chunk, offset, 1, units_behind(chunk.bound, offset) - 2);
}

}  // namespace zanvik
