// The rules of a run by their log sources; each source is compiled when its first event comes.
//
// Shared by all threads of a run. What an event matches depends only on the event and the rules.
#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

#include "sigma/group_matcher.h"
#include "sigma/rule_set.h"

namespace zanvik::sigma {

// Rules with one log source.
struct rule_group {
  std::vector<std::size_t> rules;  // numbers in the set
  std::vector<event_source> events;
  std::once_flag compiled;
  std::unique_ptr<group_matcher> matcher;  // null until then
};

// Rules that may match events of one kind, and how these events name their fields.
struct kind_part {
  const rule_group* group = nullptr;
  const event_source* source = nullptr;
  std::vector<bool> wanted;          // of the group's rules: may match events of this kind
  std::vector<std::uint32_t> asked;  // fields of the matcher that these rules ask for
};

class compiled_rules {
 public:
  // `set` must outlive this. `plain_literals`: see group_matcher.
  explicit compiled_rules(const rule_set& set, bool plain_literals = false);

  // The parts for events of this channel, provider and ID, which are texts as in the event; groups
  // are compiled when needed.
  std::vector<kind_part> parts_for(std::string_view channel, std::string_view provider,
                                   std::string_view event_id);

  const rule_set& rules() const { return set_; }
  // Number of rules compiled, and the seconds that took, of all threads; when they are done.
  std::size_t compiled() const;
  double seconds_compiling() const { return static_cast<double>(nanoseconds_compiling_) / 1e9; }

 private:
  void compile(rule_group& group);

  const rule_set& set_;
  const bool plain_literals_;
  std::vector<std::unique_ptr<rule_group>> groups_;
  std::atomic<std::int64_t> nanoseconds_compiling_ = 0;
};

}  // namespace zanvik::sigma
