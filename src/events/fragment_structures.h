// The structures of fragments that stand in records without a template: records of one kind differ
// in their texts alone, which are slots (template_compiler.h), and share a template by that.
//
// In: a fragment's template. Out: the same one each time, for the whole run. A log that makes a
// structure for each record fills the limits (limits.h) and gets no more of them.
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <string>

#include "events/event_template.h"

namespace zanvik {

class fragment_structures {
 public:
  // The kept template that equals `body`; null when it is new and there is no room for it.
  const event_template* find(const event_template& body);
  // All use of the templates must have ended.
  void clear();

 private:
  std::map<std::string, std::unique_ptr<event_template>, std::less<>> known_;
  std::string key_;
  std::size_t held_bytes_ = 0;
  std::uint64_t last_id_ = 0;
};

}  // namespace zanvik
