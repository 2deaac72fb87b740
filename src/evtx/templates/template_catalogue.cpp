#include "evtx/templates/template_catalogue.h"

#include <algorithm>
#include <cstring>

#include "base/hash_mix.h"

namespace zanvik {

std::uint64_t guid_hash(const guid_bytes& guid) {
  std::uint64_t half[2];
  std::memcpy(half, guid.data(), sizeof(half));
  return keyed_hash(half[0], half[1]);
}

std::optional<guid_bytes> definition_guid(const chunk_view& chunk, std::uint64_t offset) {
  const auto bytes = chunk.bytes.bytes_at(offset + evtx_layout::definition_guid_at, 16);
  if (bytes.empty()) return std::nullopt;
  guid_bytes guid;
  std::copy(bytes.begin(), bytes.end(), guid.begin());
  return guid;
}

void template_catalogue::read(const chunk_view& chunk) {
  by_guid_.clear();
  for (std::uint32_t slot = 0; slot < evtx_layout::template_table_slots; ++slot) {
    const auto offset =
        chunk.bytes.at_or_zero<std::uint32_t>(evtx_layout::template_table_at + 4 * slot);
    const auto guid = definition_guid(chunk, offset);
    const auto size = chunk.bytes.at<std::uint32_t>(offset + evtx_layout::definition_size_at);
    if (offset == 0 || !guid || !size) continue;
    add({offset, *size, *guid});
  }
}

void template_catalogue::add(const template_ref& ref) {
  if (!find(ref.guid)) by_guid_.add(guid_hash(ref.guid), ref);
}

const template_ref* template_catalogue::find(const guid_bytes& guid) {
  return by_guid_.find(guid_hash(guid), [&](const auto& each) { return each.guid == guid; });
}

const template_ref* resolve_first_reference(template_catalogue& catalogue, const chunk_view& chunk,
                                            std::uint64_t bxml, std::uint32_t template_id,
                                            std::uint32_t definition) {
  const auto guid = definition_guid(chunk, definition);
  if (!guid) return nullptr;
  if (const template_ref* known = catalogue.find(*guid)) return known;
  auto ref = definition_at(chunk, definition, template_id);
  if (!ref) return nullptr;
  // Meant: a definition that is elsewhere and in no table is still expected here, and its record
  // then has no names.
  ref->definition = bxml + evtx_layout::fragment_instance_bytes;
  catalogue.add(*ref);
  return catalogue.find(*guid);
}

bool body_matches(const chunk_view& chunk, const template_ref& ref) {
  return chunk.bytes.at<std::uint32_t>(ref.definition + evtx_layout::definition_size_at) ==
         ref.size_record;
}

}  // namespace zanvik
