// Templates by what records name them with, for records that stand without their chunk.
//
// In: templates that chunks brought, each under its GUID. Out: the one template that a record can
// mean by the first 4 bytes of a GUID, or nothing. What is kept is bounded; templates that come
// after that are not there. A library serves one input, so that what a record shows depends on that
// input alone.
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
  // Takes a copy. One that broke off or is known already is not taken.
  void add(const guid_bytes& guid, const event_template& body);

  // The template that fits a record with so many slots: of all that begin with that id, and have
  // that GUID where it is known, the only one that needs exactly as many, else the only one that
  // needs fewer. Lives as long as the library.
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
