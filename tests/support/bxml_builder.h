// Binary XML, token by token, written directly to its place in a chunk.
//
// In: calls in document order. Out: bytes at the end of the chunk under construction, so every
// offset is right: a name or a template definition is written at its first use and referred to
// afterwards. The sizes of elements, attribute lists, definitions and nested values are filled in
// when they end. Calls that do not make a document give bytes that are not one. The chunk's bytes
// and tables must outlive the builder.
#pragma once

#include <array>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "value_builder.h"

namespace zanvik::testing {

// What a chunk knows about its names and templates: the offset of each, and the two tables of its
// header. A bucket has the item written last; older ones are linked from it.
struct chunk_tables {
  std::map<std::string, std::uint32_t, std::less<>> name_offsets;
  std::map<std::string, std::uint32_t, std::less<>> template_offsets;  // by the GUID's 16 bytes
  std::array<std::uint32_t, 64> string_table{};
  std::array<std::uint32_t, 32> template_table{};
};

struct template_definition {
  std::string guid;  // text; the template id is its first field
  bxml_writer body;  // everything between the definition's head and what follows
};

enum class element_form { with_id, without_id, inline_name };
enum class instance_head { with_fragment, bare };  // 14 and 10 bytes

class bxml_builder {
 public:
  bxml_builder(byte_vector& chunk, chunk_tables& tables) : chunk_(chunk), tables_(tables) {}

  // Offset of the next byte in the chunk.
  std::uint32_t position() const { return static_cast<std::uint32_t>(chunk_.size()); }

  bxml_builder& fragment_header();
  bxml_builder& end_of_stream();
  // `open` starts an element without attributes, `open_with_attributes` one with some; `id` is the
  // number of the slot that makes the element optional, all ones for none.
  bxml_builder& open(std::string_view name, element_form form = element_form::with_id,
                     std::uint16_t id = 0xffff) {
    return open_element(name, form, id, false);
  }
  bxml_builder& open_with_attributes(std::string_view name,
                                     element_form form = element_form::with_id,
                                     std::uint16_t id = 0xffff) {
    return open_element(name, form, id, true);
  }
  // Sets the more-data flag of each attribute but the last.
  bxml_builder& attribute(std::string_view name);
  bxml_builder& inline_attribute(std::string_view name);
  bxml_builder& close_start();
  bxml_builder& close_empty();
  bxml_builder& end_element();
  // `more` sets the more-data flag: another piece of the same text follows.
  bxml_builder& value(std::string_view utf8, bool more = false);
  bxml_builder& char_ref(std::uint16_t code, bool more = false);
  bxml_builder& entity_ref(std::string_view name, bool more = false);
  bxml_builder& inline_entity_ref(std::string_view name, bool more = false);
  bxml_builder& normal_sub(std::uint16_t slot, std::uint8_t type) {
    return substitution(0x0d, slot, type);
  }
  bxml_builder& optional_sub(std::uint16_t slot, std::uint8_t type) {
    return substitution(0x0e, slot, type);
  }
  bxml_builder& raw(std::span<const std::byte> bytes);

  // <name>text</name>, and the same with one attribute, the shape of most event data.
  bxml_builder& text_element(std::string_view name, std::string_view text);
  bxml_builder& text_element(std::string_view name, std::string_view attribute_name,
                             std::string_view attribute_value, std::string_view text);

  // An instance head, the definition if this chunk has none with that GUID yet, and the slot table.
  bxml_builder& template_instance(const template_definition& definition,
                                  const std::vector<slot_value>& slots,
                                  instance_head head = instance_head::with_fragment);
  // Its parts, for tests that combine them differently.
  bxml_builder& instance_head_only(instance_head head, std::uint32_t template_id,
                                   std::uint32_t chunk_offset);
  bxml_builder& definition(const template_definition& definition);
  bxml_builder& slot_table(const std::vector<slot_value>& slots);

 private:
  struct element_places {
    std::size_t size_at;             // offset of the element's size
    std::size_t attributes_size_at;  // offset of the attribute list's size, 0 for none
    std::size_t last_attribute_at;   // offset of the last attribute's token, 0 for none
  };

  bxml_builder& open_element(std::string_view name, element_form form, std::uint16_t id,
                             bool attributes);
  bxml_builder& substitution(std::uint8_t token, std::uint16_t slot, std::uint8_t type);
  void attribute_token();
  void name_offset(std::string_view name);
  void inline_name(std::string_view name);
  void end_attributes();
  void end_size();

  byte_vector& chunk_;
  chunk_tables& tables_;
  std::vector<element_places> elements_;
};

// The hash in a name's entry; its low six bits select the bucket.
std::uint16_t name_hash(std::string_view utf8);

}  // namespace zanvik::testing
