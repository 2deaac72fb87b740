// Where correlations hold, against the plain way: every window counted anew, every chain tried.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>
#include <set>

#include "sigma/correlation_spans.h"

namespace zanvik::sigma {
namespace {

using kind = rule_correlation::kind;
using relation = rule_correlation::relation;
using hits_view = std::span<const correlation_hit>;

constexpr std::uint64_t second = 10000000;

bool all_hold(const rule_correlation& c, long double value) {
  return std::all_of(c.bounds.begin(), c.bounds.end(),
                     [&](const auto& bound) { return bound.holds(value); });
}

// Rules in the longest chain in their order that follows the hit.
std::size_t longest_chain(hits_view hits, std::size_t from) {
  std::size_t longest = 0;
  for (std::size_t next = from + 1; next < hits.size(); ++next) {
    if (hits[next].event == hits[from].event || hits[next].slot <= hits[from].slot) continue;
    longest = std::max(longest, longest_chain(hits, next));
  }
  return longest + 1;
}

bool window_holds(const rule_correlation& c, hits_view window) {
  std::set<std::uint32_t> events, values, slots;
  long double sum = 0;
  for (const correlation_hit& hit : window) {
    slots.insert(hit.slot);
    if (hit.counted != 0) values.insert(hit.counted);
    // Every third value is no number.
    if (events.insert(hit.event).second && hit.counted % 3 != 0) sum += hit.counted;
  }
  std::size_t numbers = 0;
  events.clear();
  for (const correlation_hit& hit : window) {
    numbers += events.insert(hit.event).second && hit.counted % 3 != 0 ? 1 : 0;
  }
  std::size_t chain = 0;
  for (std::size_t i = 0; i < window.size(); ++i) chain = std::max(chain, longest_chain(window, i));
  switch (c.what) {
    case kind::temporal_ordered:
      return all_hold(c, static_cast<long double>(chain));
    case kind::event_count:
      return all_hold(c, static_cast<long double>(events.size()));
    case kind::value_count:
      return all_hold(c, static_cast<long double>(values.size()));
    case kind::value_sum:
      return numbers != 0 && all_hold(c, sum);
    case kind::value_avg:
      return numbers != 0 && all_hold(c, sum / static_cast<long double>(numbers));
    default:
      return c.bounds.empty() ? slots.size() == c.rules.size()
                              : all_hold(c, static_cast<long double>(slots.size()));
  }
}

// Whether a chain of `needed` rules in their order, from the hit on, ends with the last hit's
// event.
bool chain_exists(hits_view hits, std::size_t from, std::size_t needed) {
  if (needed == 1) return hits[from].event == hits.back().event;
  for (std::size_t next = from + 1; next < hits.size(); ++next) {
    if (hits[next].event != hits[from].event && hits[next].slot > hits[from].slot &&
        chain_exists(hits, next, needed - 1)) {
      return true;
    }
  }
  return false;
}

using bounds = std::vector<std::pair<std::size_t, std::size_t>>;

// For each event that ends a chain, the latest one.
bounds plain_chains(const rule_correlation& c, hits_view hits) {
  bounds found;
  for (std::size_t last = 0; last < hits.size(); ++last) {
    if (last + 1 != hits.size() && hits[last + 1].repeats) continue;
    for (std::size_t first = last + 1; first-- > 0;) {
      if (!chain_exists(hits.first(last + 1), first, c.ordered_rules_needed())) continue;
      while (hits[first].repeats) --first;  // the whole event
      if (hits[last].time - hits[first].time <= c.timespan_seconds * second) {
        found.emplace_back(first, last);
      }
      break;
    }
  }
  return found;
}

bounds plain_windows(const rule_correlation& c, hits_view hits) {
  bounds found;
  const std::uint64_t span = c.timespan_seconds * second;
  for (std::size_t first = 0; first < hits.size(); ++first) {
    std::size_t last = first;
    while (last + 1 < hits.size() && hits[last + 1].time - hits[first].time <= span) ++last;
    const bool within = first != 0 && hits[last].time - hits[first - 1].time <= span;
    if (!within && window_holds(c, hits.subspan(first, last - first + 1))) {
      found.emplace_back(first, last);
    }
  }
  return found;
}

std::vector<correlation_hit> random_hits(std::mt19937& random, std::size_t slots) {
  std::vector<correlation_hit> out;
  std::uint64_t time = 1000 * second;
  for (std::uint32_t event = 0; event < 14; ++event) {
    time += random() % 4 * second;
    bool first = true;
    for (std::uint32_t slot = 0; slot < slots; ++slot) {
      if (random() % slots > 1) continue;
      out.push_back({time, event, slot, 1, static_cast<std::uint32_t>(random() % 6), !first});
      if (!first) out.back().counted = out[out.size() - 2].counted;
      first = false;
    }
  }
  return out;
}

// Each hit that lies in a span, so that spans that overlap are one.
std::vector<bool> covered(const bounds& spans, std::size_t hits) {
  std::vector<bool> out(hits);
  for (const auto& [first, last] : spans) {
    for (std::size_t i = first; i <= last; ++i) out[i] = true;
  }
  return out;
}

TEST(correlation_spans, are_where_every_window_counted_anew_says) {
  std::mt19937 random(11);
  const auto number = [](std::uint32_t counted) {
    return counted % 3 == 0 ? std::nanl("") : static_cast<long double>(counted);
  };
  std::size_t holding = 0, all = 0;
  for (int round = 0; round < 3000; ++round) {
    rule_correlation c;
    c.what = static_cast<kind>(random() % 6);
    c.rules.resize(2 + random() % 3);
    c.timespan_seconds = 1 + random() % 8;
    const bool counts_rules = c.what == kind::temporal || c.what == kind::temporal_ordered;
    if (!counts_rules || random() % 2 != 0) {
      c.bounds.push_back(
          {static_cast<relation>(random() % 6), static_cast<long double>(random() % 5)});
    }
    const auto hits = random_hits(random, c.rules.size());
    if (hits.empty()) continue;
    bounds quick;
    for (const hit_span& span : spans_that_hold(c, hits, number)) {
      EXPECT_LE(span.first, span.completed);
      EXPECT_LE(span.completed, span.last);
      EXPECT_TRUE(quick.empty() || quick.back().second < span.first);
      quick.emplace_back(span.first, span.last);
    }
    const bool at_least = c.what == kind::temporal_ordered && c.ordered_rules_needed() != 0;
    const bounds spans = at_least ? plain_chains(c, hits) : plain_windows(c, hits);
    const auto plain = covered(spans, hits.size());
    ASSERT_EQ(covered(quick, hits.size()), plain) << static_cast<int>(c.what) << ", " << round;
    holding += static_cast<std::size_t>(std::count(plain.begin(), plain.end(), true));
    all += hits.size();
  }
  EXPECT_GT(holding, all / 10);
  EXPECT_LT(holding, all * 9 / 10);
}

}  // namespace
}  // namespace zanvik::sigma
