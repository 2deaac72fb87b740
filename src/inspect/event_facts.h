// What the events of a log say about the log: their computers and users, how many there are, and
// which are about clearing, the log's service and the clock.
//
// In: the live events, in the order of the log. Out: counts and findings in the log's ledger, and
// the clock changes that explain times running backwards. Names are counted separately up to a
// limit.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "events/event_view.h"
#include "inspect/record_sequence.h"

namespace zanvik {

class event_facts : public event_sink {
 public:
  // `out` must outlive this.
  explicit event_facts(log_ledger& out) : out_(out) {}

  void on_event(const event_view& event) override;
  // Adds what depends on all events: the counts, the jumps of the clock with or without the events
  // that explain them, and a log that does not begin with record 1.
  void finish(const std::vector<time_jump>& jumps, std::uint64_t first_number);

 private:
  // Counts by name, as many names as the limit allows.
  class name_counts {
   public:
    void add(std::string_view name);
    bool has(std::string_view name) const { return counts_.contains(name); }
    bool empty() const { return counts_.empty(); }
    std::vector<name_count> sorted() const;

   private:
    std::map<std::string, std::uint64_t, std::less<>> counts_;
    std::uint64_t others_ = 0;
  };
  struct clock_change {
    std::uint64_t before = 0, after = 0;  // FILETIME
    std::uint64_t record = 0;
  };

  void tell_sign(const event_view& event, std::uint64_t id, std::string_view provider);
  void tell_computer(const event_view& event);
  void note_clock_change(const event_view& event, std::uint64_t id, std::string_view provider);
  void find(const event_view& event, finding_kind kind, std::string detail);
  // The datum of that name as text, empty if there is none.
  std::string datum(const event_view& event, std::string_view name);
  const clock_change* change_behind(const time_jump& jump) const;

  log_ledger& out_;
  std::string scratch_;
  std::string name_;
  name_counts events_, hosts_, users_, channels_;
  std::map<std::uint64_t, std::uint64_t> days_;  // by days since 1601
  std::vector<clock_change> changes_;
  std::vector<std::uint64_t> clearings_;  // record numbers
  std::uint64_t first_time_ = 0, last_time_ = 0;
};

}  // namespace zanvik
