// Where, among the matches of one group by time, the condition of a correlation holds.
//
// In: the hits of one group, sorted by time and then by event. Out: spans of hits. A window begins
// with a hit and lasts for the timespan; a window inside another does not count.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <span>
#include <vector>

#include "sigma/rule.h"

namespace zanvik::sigma {

// A match of a rule as one correlation sees it.
struct correlation_hit {
  std::uint64_t time = 0;     // FILETIME
  std::uint32_t event = 0;    // number of the remembered event
  std::uint32_t slot = 0;     // which of the correlation's rules
  std::uint32_t group = 0;    // number of its values of the group-by fields
  std::uint32_t counted = 0;  // number of its values of the counted fields; 0: one is absent
  bool repeats = false;       // the same event as the hit before it, by another rule
};

struct hit_span {
  std::size_t first = 0, last = 0;
  std::size_t completed = 0;  // with this hit the condition came to hold
  std::uint64_t events = 0;   // in the span; of value_percentile, those of the value
};

// The value as a number, NaN if it is not one.
using number_of_counted = std::function<long double(std::uint32_t counted)>;

// Spans in which the condition holds, by their first hit; overlapping ones are joined.
std::vector<hit_span> spans_that_hold(const rule_correlation& c,
                                      std::span<const correlation_hit> hits,
                                      const number_of_counted& numbers);

}  // namespace zanvik::sigma
