// The templates of one chunk by GUID: those at the heads of the chunk's template table, and those
// in its records. The first entry under a GUID is kept.
#pragma once

#include <cstdint>
#include <optional>

#include "evtx/bxml/slot_table.h"
#include "evtx/container/chunk_table.h"

namespace zanvik {

class template_catalogue {
 public:
  // Resets it to the heads in the chunk's template table.
  void read(const chunk_view& chunk);
  void add(const template_ref& ref);
  // Null if there is none. Valid until the next `add` or `read`.
  const template_ref* find(const guid_bytes& guid);

 private:
  chunk_table<template_ref, 128> by_guid_;
};

// The hash of a GUID in the program's own tables.
std::uint64_t guid_hash(const guid_bytes& guid);

// The 16 bytes of the GUID of the definition at `offset`; nothing if they do not exist.
std::optional<guid_bytes> definition_guid(const chunk_view& chunk, std::uint64_t offset);

// The first reference of a record whose binary XML starts at `bxml` with the instance `head`: the
// catalogue's entry under the GUID of its definition; else a new entry, which is assumed to
// directly follow the instance head. Null if there is no GUID, or a new one that does not begin
// with the head's template id.
const template_ref* resolve_first_reference(template_catalogue& catalogue, const chunk_view& chunk,
                                            std::uint64_t bxml, std::uint32_t template_id,
                                            std::uint32_t definition);

// Whether the definition at the reference has the size that the reference states; if not, its body
// is not decoded.
bool body_matches(const chunk_view& chunk, const template_ref& ref);

}  // namespace zanvik
