// The templates of one chunk by GUID: those at the heads of the chunk's template table, and those
// that its records bring. The first entry under a GUID stays.
#pragma once

#include <cstdint>
#include <unordered_map>

#include "evtx/bxml/slot_table.h"

namespace zanvik {

class template_catalogue {
 public:
  // Starts anew with the heads in the chunk's template table.
  void read(const chunk_view& chunk);
  void add(const template_ref& ref) { by_guid_.try_emplace(ref.guid, ref); }
  // Null when there is none. Valid until the next `read`.
  const template_ref* find(const guid_bytes& guid) const;

 private:
  struct guid_hash {
    std::size_t operator()(const guid_bytes& guid) const;
  };
  std::unordered_map<guid_bytes, template_ref, guid_hash> by_guid_;
};

// The 16 bytes of the GUID of the definition at `offset`; nothing when they are not there.
std::optional<guid_bytes> definition_guid(const chunk_view& chunk, std::uint64_t offset);

// The first reference of a record whose binary XML starts at `bxml` with the instance `head`: the
// catalogue's entry under the GUID that its definition bears; else a new entry, which is taken to
// stand right behind the instance head. Null when there is no GUID, or a new one that does not
// begin with the head's template id.
const template_ref* resolve_first_reference(template_catalogue& catalogue, const chunk_view& chunk,
                                            std::uint64_t bxml, std::uint32_t template_id,
                                            std::uint32_t definition);

// Whether the definition where the reference points has the size that the reference states; a
// body that does not is not decoded.
bool body_matches(const chunk_view& chunk, const template_ref& ref);

}  // namespace zanvik
