#include "evtx/bxml/bxml_tokens.h"

#include <limits>

#include "base/utf16.h"

namespace zanvik {
namespace {

// A bound that a size fails only when the size fits in 32 bits.
bool within(std::uint64_t value, std::uint64_t size) {
  return size > std::numeric_limits<std::uint32_t>::max() || value <= size;
}

std::int64_t units_behind(std::uint64_t size, std::uint64_t offset) {
  return (static_cast<std::int64_t>(size) - static_cast<std::int64_t>(offset)) / 2;
}

enum class element_form { none, with_id, without_id, inline_name };

// Layouts as bxml_tokens.h has them, tried in this order; the first whose bounds hold is taken.
element_form element_form_at(const chunk_view& chunk, std::uint64_t offset) {
  const byte_cursor& bytes = chunk.bytes;
  const auto token = bytes.at<std::uint8_t>(offset);
  if (!token || !is_token(*token, token_open_element)) return element_form::none;
  const auto size_with_id = bytes.at<std::uint32_t>(offset + 3);
  const auto name_with_id = bytes.at<std::uint32_t>(offset + 7);
  if (size_with_id && name_with_id && within(*size_with_id, chunk.bound) &&
      within(std::uint64_t{*name_with_id} + 10, chunk.bound)) {
    return element_form::with_id;
  }
  const auto size = bytes.at<std::uint32_t>(offset + 1);
  const auto name = bytes.at<std::uint32_t>(offset + 5);
  if (!size || !within(*size, chunk.bound)) return element_form::none;
  if (name && within(std::uint64_t{*name} + 10, chunk.bound)) return element_form::without_id;
  const auto units = bytes.at<std::uint16_t>(offset + 7);
  if (units && within(2u * *units, chunk.bound) && *size >= 2u * *units + 11) {
    return element_form::inline_name;
  }
  return element_form::none;
}

// A token of `head` bytes that names its name by a chunk offset. The name stands right behind the
// head when the offset says so, and belongs to the token then.
named_token token_by_offset(const chunk_view& chunk, std::uint64_t offset, std::uint64_t head,
                            std::uint64_t name_offset) {
  named_token token;
  auto name = name_entry_at(chunk, name_offset);
  if (name) token.name = std::move(*name);
  token.length = head;
  token.offset_field = head - 4;  // the offset ends the head in every layout
  token.name_offset = name_offset;
  if (name_offset == offset + head) {
    if (!name) return {};  // the rest of the token is not there
    token.length += token.name.length;
  }
  return token;
}

// A token of one byte and an inline name.
named_token token_with_name(const chunk_view& chunk, std::uint64_t offset) {
  auto name = inline_name_at(chunk, offset + 1, units_behind(chunk.bound, offset) - 2);
  if (!name) return {};
  named_token token;
  token.name = std::move(*name);
  token.length = 1 + token.name.length;
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

name_entry counted_text_at(const chunk_view& chunk, std::uint64_t offset, std::uint64_t units,
                           bool read, std::uint64_t head_length) {
  name_entry entry;
  entry.units = units;
  entry.length = head_length + 2 * units;
  if (!read || !chunk.bytes.has(offset, 2 * units)) return entry;
  append_utf8_from_utf16(entry.text, chunk.bytes.bytes_at(offset, 2 * units));
  // Two zero bytes behind the text belong to it.
  if (chunk.bytes.at<std::uint16_t>(offset + 2 * units) == 0) entry.length += 2;
  return entry;
}

std::optional<name_entry> name_entry_at(const chunk_view& chunk, std::uint64_t offset) {
  const auto units = chunk.bytes.at<std::uint16_t>(offset + 6);
  if (!units) return std::nullopt;
  const bool fits = *units <= units_behind(chunk.bound, offset) - 4;
  return counted_text_at(chunk, offset + 8, *units, fits, 8);
}

std::optional<name_entry> inline_name_at(const chunk_view& chunk, std::uint64_t offset,
                                         std::int64_t bound) {
  const auto units = chunk.bytes.at<std::uint16_t>(offset + 2);
  if (!units) return std::nullopt;
  return counted_text_at(chunk, offset + 4, *units, *units <= bound, 4);
}

bool is_element_without_id(const chunk_view& chunk, std::uint64_t offset) {
  return element_form_at(chunk, offset) == element_form::without_id;
}

named_token element_at(const chunk_view& chunk, std::uint64_t offset) {
  const byte_cursor& bytes = chunk.bytes;
  const element_form form = element_form_at(chunk, offset);
  named_token token;
  std::uint32_t element_size = 0;
  switch (form) {
    case element_form::none:
      return {};
    case element_form::with_id: {
      element_size = bytes.at_or_zero<std::uint32_t>(offset + 3);
      const std::uint64_t name = bytes.at_or_zero<std::uint32_t>(offset + 7);
      token = token_by_offset(chunk, offset, 11, name);
      token.name_past_end = name + 2 * token.name.units > chunk.bound;
      break;
    }
    case element_form::without_id:
      element_size = bytes.at_or_zero<std::uint32_t>(offset + 1);
      token = token_by_offset(chunk, offset, 9, bytes.at_or_zero<std::uint32_t>(offset + 5));
      break;
    case element_form::inline_name: {
      element_size = bytes.at_or_zero<std::uint32_t>(offset + 1);
      // Meant: the bound comes from the element's size where the others take an offset.
      auto name = inline_name_at(chunk, offset + 5, units_behind(chunk.bound, element_size) - 4);
      if (!name) return {};
      token.name = std::move(*name);
      token.length = 5 + token.name.length;
      break;
    }
  }
  token.element_size = element_size;
  if (token.length != 0 && (bytes.at_or_zero<std::uint8_t>(offset) & token_more)) {
    token.length += 4;  // the size of the attribute list
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
    if (!within(std::uint64_t{*name_offset} + 10, chunk.bound)) token.name.text.clear();
    return token;
  }
  return token_with_name(chunk, offset);
}

named_token entity_at(const chunk_view& chunk, std::uint64_t offset) {
  const byte_cursor& bytes = chunk.bytes;
  const auto byte = bytes.at<std::uint8_t>(offset);
  const auto discriminator = bytes.at<std::uint16_t>(offset + 3);
  if (!byte || !discriminator || !is_token(*byte, token_entity_reference)) return {};
  if (*discriminator == 0) {
    return token_by_offset(chunk, offset, 5, bytes.at_or_zero<std::uint32_t>(offset + 1));
  }
  return token_with_name(chunk, offset);
}

}  // namespace zanvik
