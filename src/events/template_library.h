// Templates by what records refer to them with, for records without their chunk.
//
// In: templates from chunks, each under its GUID. Out: the one template that a record can mean by
// the first 4 bytes of a GUID, or nothing. What is kept is bounded; later templates are not kept. A
// library is for one input, so what a record shows depends on that input alone.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <unordered_map>
#include <vector>

#include "events/event_template.h"
#include "evtx/bxml/slot_table.h"

namespace zanvik {

class template_library {
 public:
  // Stores a copy. One that is cut or known already is not stored.
  void add(const guid_bytes& guid, const event_template& body);

  // The template that fits a record with this many slots: among all that begin with that ID, and
  // have that GUID if it is known, the only one that needs exactly as many, else the only one that
  // needs fewer. Valid as long as the library.
  const event_template* find(std::uint32_t template_id, const std::optional<guid_bytes>& guid,
                             std::uint32_t slots) const;

 private:
  struct entry {
    guid_bytes guid;
    std::uint32_t slots = 0;  // one more than the highest that it names
    std::unique_ptr<event_template> body;
  };

  std::unordered_map<std::uint64_t, std::vector<entry>> by_id_;  // by keyed hash
  std::size_t held_bytes_ = 0;
  std::uint64_t last_id_ = 0;
};

}  // namespace zanvik
