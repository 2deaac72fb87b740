// Rules on events: finds the rules that each event matches.
//
// In: event views of any logs. Out: a call for each event that some rule matches. Which rules and
// fields are relevant for a kind of events (channel, provider, event ID) is computed for the first
// one, and where these fields are for the first one of each shape. Each thread has a hunter.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "base/hash_mix.h"
#include "events/event_view.h"
#include "sigma/compiled_rules.h"

namespace zanvik::sigma {

struct hunt_counts {
  std::uint64_t events = 0;
  std::map<std::string, std::uint64_t> unconcerned;  // by channel: events that no rule concerned
  std::map<std::size_t, std::uint64_t> gave_up;      // by rule: events in which a limit was reached
  std::map<std::size_t, std::uint64_t> left_out;     // by rule: logs of which a part lacks it

  // Adds the counts of the next part of a log, which has a number. The order of parts decides which
  // of very many channels are counted by name.
  void add(const hunt_counts& part, std::uint64_t log);

 private:
  std::map<std::size_t, std::uint64_t> last_log_;  // by rule: the last one in `left_out`
};

class hunter : public event_sink {
 public:
  // The event and the numbers of the rules that it matches, in ascending order.
  using match_callback = std::function<void(const event_view&, std::span<const std::uint32_t>)>;

  // `rules` must outlive the hunter.
  hunter(compiled_rules& rules, match_callback on_match);
  ~hunter() override;

  // The following events are of another part of a log, or of another log. Its counts begin at 0.
  void start_part();
  void on_event(const event_view& event) override;

  // The counts of the part so far.
  hunt_counts counts();

 private:
  struct kind_part_use;
  struct kind;
  // The values of one field of the current event, as text.
  struct rendered {
    std::uint64_t event = 0;
    std::vector<std::pair<std::string, std::string>> texts;  // each text and its folded form
    field_values values;
  };
  struct shape_plan;
  struct plan_use;

  shape_plan& plan_for(const event_shape& shape);
  plan_use& use_of(const event_view& event, shape_plan& plan);
  kind& find_kind(const event_view& event);
  void forget_kinds();
  const field_values& render(const event_view& event, std::uint32_t field);
  static void append_value(rendered& out, const event_value& value);
  void collect(const event_view& event, const std::vector<std::uint32_t>& fields,
               field_values& out);
  void count_given_up(const rule_group& group, group_state& state);
  bool passes_where(const event_view& event, const event_source& source,
                    const std::vector<std::vector<std::uint32_t>>& where);
  void take_unconcerned();

  compiled_rules& rules_;
  match_callback on_match_;
  literal_scratch literals_;
  test_scratch scratch_;
  std::unordered_map<std::string, std::unique_ptr<kind>, keyed_text_hash> kinds_;
  std::map<const rule_group*, std::unique_ptr<group_state>> states_;
  std::vector<std::unique_ptr<shape_plan>> plans_;  // by index of the shape
  std::vector<rendered> fields_;                    // by number of the field
  std::uint64_t events_ = 0;
  std::string key_;
  std::vector<std::uint32_t> part_matches_, matches_;
  std::uint64_t part_began_ = 0;  // `events_` at its start
  hunt_counts counts_;            // of the part
};

}  // namespace zanvik::sigma
