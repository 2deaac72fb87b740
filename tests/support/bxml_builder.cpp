#include "bxml_builder.h"

#include <stdexcept>

namespace zanvik::testing {

namespace {

constexpr std::uint8_t more_data = 0x40;

// The hash of names and of GUIDs, over 16-bit units.
std::uint32_t unit_hash(std::span<const std::byte> utf16) {
  std::uint32_t hash = 0;
  for (std::size_t i = 0; i + 1 < utf16.size(); i += 2) {
    hash = hash * 65599 + (std::to_integer<std::uint32_t>(utf16[i]) |
                           std::to_integer<std::uint32_t>(utf16[i + 1]) << 8);
  }
  return hash;
}

std::uint8_t with_more(std::uint8_t token, bool more) {
  return more ? static_cast<std::uint8_t>(token | more_data) : token;
}

}  // namespace

std::uint16_t name_hash(std::string_view utf8) {
  byte_vector units;
  append_utf16(units, utf8);
  return static_cast<std::uint16_t>(unit_hash(units));
}

bxml_builder& bxml_builder::fragment_header() { return raw(bytes_of({0x0f, 1, 1, 0})); }
bxml_builder& bxml_builder::end_of_stream() { return raw(bytes_of({0})); }

bxml_builder& bxml_builder::open_element(std::string_view name, element_form form, std::uint16_t id,
                                         bool attributes) {
  append_u8(chunk_, with_more(0x01, attributes));
  if (form == element_form::with_id) append_u16(chunk_, id);
  elements_.push_back({.size_at = chunk_.size(), .attributes_size_at = 0, .last_attribute_at = 0});
  append_u32(chunk_, 0);
  if (form == element_form::inline_name) {
    inline_name(name);
  } else {
    name_offset(name);
  }
  if (!attributes) return *this;
  elements_.back().attributes_size_at = chunk_.size();
  append_u32(chunk_, 0);
  return *this;
}

bxml_builder& bxml_builder::attribute(std::string_view name) {
  attribute_token();
  name_offset(name);
  return *this;
}

bxml_builder& bxml_builder::inline_attribute(std::string_view name) {
  attribute_token();
  inline_name(name);
  return *this;
}

void bxml_builder::attribute_token() {
  if (elements_.empty() || elements_.back().attributes_size_at == 0) {
    throw std::logic_error("attribute of an element that was opened without attributes");
  }
  element_places& element = elements_.back();
  if (element.last_attribute_at != 0) set_u8(chunk_, element.last_attribute_at, 0x06 | more_data);
  element.last_attribute_at = chunk_.size();
  append_u8(chunk_, 0x06);
}

void bxml_builder::end_attributes() {
  if (elements_.empty()) throw std::logic_error("no element is open");
  const std::size_t at = elements_.back().attributes_size_at;
  if (at == 0) return;
  set_u32(chunk_, at, static_cast<std::uint32_t>(chunk_.size() - at - 4));
}

void bxml_builder::end_size() {
  if (elements_.empty()) throw std::logic_error("no element is open");
  const std::size_t at = elements_.back().size_at;
  set_u32(chunk_, at, static_cast<std::uint32_t>(chunk_.size() - at - 4));
  elements_.pop_back();
}

bxml_builder& bxml_builder::close_start() {
  end_attributes();
  append_u8(chunk_, 0x02);
  return *this;
}

bxml_builder& bxml_builder::close_empty() {
  end_attributes();
  append_u8(chunk_, 0x03);
  end_size();
  return *this;
}

bxml_builder& bxml_builder::end_element() {
  append_u8(chunk_, 0x04);
  end_size();
  return *this;
}

bxml_builder& bxml_builder::value(std::string_view utf8, bool more) {
  append_u8(chunk_, with_more(0x05, more));
  append_u8(chunk_, 1);  // the type: text
  append_u16(chunk_, static_cast<std::uint16_t>(utf16_units(utf8)));
  append_utf16(chunk_, utf8);
  return *this;
}

bxml_builder& bxml_builder::char_ref(std::uint16_t code, bool more) {
  append_u8(chunk_, with_more(0x08, more));
  append_u16(chunk_, code);
  return *this;
}

bxml_builder& bxml_builder::entity_ref(std::string_view name, bool more) {
  append_u8(chunk_, with_more(0x09, more));
  name_offset(name);
  return *this;
}

bxml_builder& bxml_builder::inline_entity_ref(std::string_view name, bool more) {
  append_u8(chunk_, with_more(0x09, more));
  inline_name(name);
  return *this;
}

bxml_builder& bxml_builder::substitution(std::uint8_t token, std::uint16_t slot,
                                         std::uint8_t type) {
  append_u8(chunk_, token);
  append_u16(chunk_, slot);
  append_u8(chunk_, type);
  return *this;
}

bxml_builder& bxml_builder::raw(std::span<const std::byte> bytes) {
  append_bytes(chunk_, bytes);
  return *this;
}

bxml_builder& bxml_builder::text_element(std::string_view name, std::string_view text) {
  return open(name).close_start().value(text).end_element();
}

bxml_builder& bxml_builder::text_element(std::string_view name, std::string_view attribute_name,
                                         std::string_view attribute_value, std::string_view text) {
  open_with_attributes(name).attribute(attribute_name).value(attribute_value).close_start();
  return value(text).end_element();
}

// The offset of the name's entry; at a name's first use the entry follows directly.
void bxml_builder::name_offset(std::string_view name) {
  const auto known = tables_.name_offsets.find(name);
  if (known != tables_.name_offsets.end()) {
    append_u32(chunk_, known->second);
    return;
  }
  const std::uint32_t entry = position() + 4;
  const std::uint16_t hash = name_hash(name);
  std::uint32_t& bucket = tables_.string_table[hash % 64];
  append_u32(chunk_, entry);
  append_u32(chunk_, bucket);
  inline_name(name);
  bucket = entry;
  tables_.name_offsets.emplace(name, entry);
}

void bxml_builder::inline_name(std::string_view name) {
  append_u16(chunk_, name_hash(name));
  append_u16(chunk_, static_cast<std::uint16_t>(utf16_units(name)));
  append_utf16z(chunk_, name);
}

bxml_builder& bxml_builder::template_instance(const template_definition& definition,
                                              const std::vector<slot_value>& slots,
                                              instance_head head) {
  const byte_vector guid = guid_bytes(definition.guid);
  const std::string key(reinterpret_cast<const char*>(guid.data()), guid.size());
  const auto known = tables_.template_offsets.find(key);
  const bool resident = known == tables_.template_offsets.end();
  const std::uint32_t head_bytes = head == instance_head::with_fragment ? 14 : 10;
  instance_head_only(head, get_u32(guid, 0), resident ? position() + head_bytes : known->second);
  if (resident) this->definition(definition);
  return slot_table(slots);
}

bxml_builder& bxml_builder::instance_head_only(instance_head head, std::uint32_t template_id,
                                               std::uint32_t chunk_offset) {
  if (head == instance_head::with_fragment) fragment_header();
  append_u8(chunk_, 0x0c);
  append_u8(chunk_, 1);
  append_u32(chunk_, template_id);
  append_u32(chunk_, chunk_offset);
  return *this;
}

bxml_builder& bxml_builder::definition(const template_definition& definition) {
  const byte_vector guid = guid_bytes(definition.guid);
  const std::uint32_t at = position();
  std::uint32_t& bucket = tables_.template_table[unit_hash(guid) % 32];
  append_u32(chunk_, bucket);
  append_bytes(chunk_, guid);
  append_u32(chunk_, 0);
  bucket = at;
  tables_.template_offsets.emplace(
      std::string(reinterpret_cast<const char*>(guid.data()), guid.size()), at);
  definition.body(*this);
  set_u32(chunk_, at + 20, position() - at - 24);
  return *this;
}

bxml_builder& bxml_builder::slot_table(const std::vector<slot_value>& slots) {
  append_u32(chunk_, static_cast<std::uint32_t>(slots.size()));
  const std::size_t descriptors = chunk_.size();
  append_zeros(chunk_, 4 * slots.size());
  for (std::size_t i = 0; i < slots.size(); ++i) {
    const std::size_t start = chunk_.size();
    if (slots[i].nested) {
      slots[i].nested(*this);
    } else {
      append_bytes(chunk_, slots[i].bytes);
    }
    const auto size = static_cast<std::uint16_t>(chunk_.size() - start);
    set_u16(chunk_, descriptors + 4 * i, slots[i].declared_size.value_or(size));
    set_u16(chunk_, descriptors + 4 * i + 2, slots[i].type);
  }
  return *this;
}

}  // namespace zanvik::testing
