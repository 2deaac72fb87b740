// The layouts of a run, each content once, so that records of one template share a layout across
// chunks and whoever works out something for a layout does it once.
#pragma once

#include <cstdint>
#include <memory>
#include <unordered_map>

#include "evtx/record_fields.h"

namespace zanvik {

class layout_cache {
 public:
  // The cache's own layout of this content, with an id; valid until `drop_if_full` drops it.
  const record_layout* intern(record_layout layout);

  // Starts anew when the cache holds more than its limits; call it between chunks. True when the
  // layouts handed out so far are gone.
  bool drop_if_full();

 private:
  std::unordered_multimap<std::size_t, std::unique_ptr<record_layout>> by_hash_;
  std::size_t text_bytes_ = 0;
  std::uint64_t last_id_ = 0;
};

}  // namespace zanvik
