// Matches rules with events made by a test, in every way that exists.
#pragma once

#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "reference/plain_rules.h"
#include "sigma/group_matcher.h"
#include "sigma/rule_set.h"

namespace zanvik::sigma {

// Fields with their values. A value `null_value` exists and is empty.
using made_event = std::vector<std::pair<std::string, std::string>>;
inline constexpr std::string_view null_value = "\x01null";

class made_fields : public event_fields {
 public:
  explicit made_fields(const made_event& event);
  const field_values& values(std::string_view name) const override;

 private:
  std::vector<std::unique_ptr<std::pair<std::string, std::string>>> texts_;
  std::map<std::string, field_values, std::less<>> fields_;
  field_values all_, none_;
};

// The detections of a rule set that run, each matched with events of its first source by the plain
// way, and by compiled matchers with either engine for literals.
class all_ways {
 public:
  explicit all_ways(const rule_set& set);

  struct answer {
    std::vector<std::uint32_t> plain, quick, quick_plain_literals;  // numbers among the detections
    bool agree() const { return plain == quick && plain == quick_plain_literals; }
  };
  answer match(const made_event& event);
  // Only the plain way asks what else a log source wants of its events.
  bool comparable() const { return source_ != nullptr && source_->where.empty(); }

 private:
  std::vector<std::uint32_t> by_matcher(const group_matcher& matcher, group_state& state,
                                        const made_fields& fields);

  std::vector<const rule*> rules_;
  const event_source* source_ = nullptr;
  std::unique_ptr<group_matcher> quick_, quick_plain_literals_;
  literal_scratch literals_;
  test_scratch scratch_;
  std::unique_ptr<group_state> state_, state_plain_literals_;
};

}  // namespace zanvik::sigma
