// Which events a verb takes: conditions on any field, for whole events of either reader.
//
// In: conditions, as options give them; their texts are checked when they are added. Out: yes or no
// for each event. All conditions must hold. Fields are looked up once for each shape of events.
#pragma once

#include <bitset>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "events/event_view.h"

namespace zanvik {

// Text with `*` for any run of characters and `?` for one. ASCII letters match in any case; for
// others, both are given without it (base/fold_case.h), as an event_filter does.
bool matches_pattern(std::string_view text, std::string_view pattern);

struct where_condition {
  std::string name;
  std::string pattern;
  bool negated = false;
};

// Numbers of all lists that were given: any of them is taken, but for those that a `!` leaves out.
struct event_id_lists {
  std::bitset<65536> taken;
  std::bitset<65536> left_out;
  bool any_taken = false;
};

struct event_conditions {
  std::optional<std::bitset<65536>> event_ids;
  event_id_lists event_id_lists_given;  // what `event_ids` is made of
  std::vector<std::string> channels;    // patterns: one of them has to match
  std::vector<std::string> providers;
  std::vector<std::string> computers;
  std::vector<std::string> users;
  std::uint64_t from = 0;  // FILETIME; both belong to the range
  std::uint64_t to = ~std::uint64_t{0};
  std::vector<where_condition> where;
  std::vector<std::string> contains;
  std::optional<std::bitset<256>> levels;

  bool any() const;
};

// These read the text of an option. On failure they return false, or nothing, and change nothing.
//
// "4624,4625,1000-1010" selects these, "!4634" all but this.
bool read_event_ids(std::string_view text, event_conditions& out);
// "error,warning" or numbers.
bool read_levels(std::string_view text, event_conditions& out);
// "NAME=PATTERN", "NAME!=PATTERN".
bool read_where(std::string_view text, event_conditions& out);
// ISO 8601: a date, or a date and a time with `T` or a blank between them, followed by `Z`, an
// offset or nothing, which means UTC; a day with an offset is the day there. The FILETIME of its
// first tick, or of the last one that it covers.
std::optional<std::uint64_t> read_time(std::string_view text, bool last_tick);

// Texts are compared in any case of the letters that base/fold_case.h knows.
class event_filter {
 public:
  explicit event_filter(const event_conditions& conditions);
  bool takes(const event_view& event);

 private:
  struct known_shape {
    std::uint64_t id = 0;
    std::vector<std::vector<std::uint32_t>> where;  // fields for each condition
  };
  const known_shape& fields_of(const event_shape& shape);
  bool member_matches(const event_view& event, system_member member,
                      const std::vector<std::string>& patterns);
  bool where_holds(const event_view& event, const known_shape& known);
  bool has_user(const event_view& event);
  bool contains_all(const event_view& event);
  bool text_matches(const event_view& event, std::uint32_t field, std::string_view pattern);

  // The text without case if it is not ASCII alone, whose case needs no care here.
  std::string_view comparable(std::string_view text);

  event_conditions conditions_;  // with their texts folded
  std::vector<known_shape> known_;
  std::string scratch_;
  std::string folded_;
};

}  // namespace zanvik
