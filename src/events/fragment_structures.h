// The structures of fragments in records without a template: records of one kind differ only in
// their texts, which are slots (template_compiler.h), so they share a template.
//
// In: a fragment's template. Out: the same one each time, for the whole run. A log that makes a
// structure for each record reaches the limits (limits.h), and no more are kept for it.
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <string>

#include "events/event_template.h"

namespace zanvik {

class fragment_structures {
 public:
  // The kept template that equals `body`; null if it is new and there is no room for it.
  const event_template* find(const event_template& body);
  // No template may be in use any more.
  void clear();

 private:
  std::map<std::string, std::unique_ptr<event_template>, std::less<>> known_;
  std::string key_;
  std::size_t held_bytes_ = 0;
  std::uint64_t last_id_ = 0;
};

}  // namespace zanvik
