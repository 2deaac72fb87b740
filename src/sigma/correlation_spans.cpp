#include "sigma/correlation_spans.h"

#include <algorithm>
#include <cmath>
#include <unordered_map>

namespace zanvik::sigma {
namespace {

constexpr std::uint64_t filetime_per_second = 10000000;

using kind = rule_correlation::kind;
using hits_view = std::span<const correlation_hit>;

std::uint64_t timespan_of(const rule_correlation& c) {
  return c.timespan_seconds * filetime_per_second;
}

// Whether all bounds hold for the count or sum.
bool holds(const rule_correlation& c, long double value) {
  return std::all_of(c.bounds.begin(), c.bounds.end(),
                     [value](const auto& bound) { return bound.holds(value); });
}

// What a correlation counts or adds, while hits enter and leave the window.
class window_count {
 public:
  window_count(const rule_correlation& c, const number_of_counted& numbers)
      : c_(c), numbers_(numbers) {}

  void change(const correlation_hit& hit, int by) {
    if (c_.what == kind::temporal) {
      change_distinct(hit.slot, by);
    } else if (hit.repeats) {
      return;
    } else if (c_.what == kind::event_count) {
      count_ += by;
    } else if (hit.counted != 0) {  // a value that is not there is none to count
      c_.what == kind::value_count ? change_distinct(hit.counted, by) : add(hit.counted, by);
    }
  }

  bool holds() const {
    if (c_.what == kind::event_count) return sigma::holds(c_, static_cast<long double>(count_));
    if (c_.what == kind::value_sum) return count_ != 0 && sigma::holds(c_, sum_);
    if (c_.what == kind::value_avg) {
      return count_ != 0 && sigma::holds(c_, sum_ / static_cast<long double>(count_));
    }
    // A temporal one without a condition needs all of its rules.
    if (c_.bounds.empty()) return distinct_.size() == c_.rules.size();
    return sigma::holds(c_, static_cast<long double>(distinct_.size()));
  }

 private:
  void change_distinct(std::uint32_t value, int by) {
    std::int64_t& count = distinct_[value];
    count += by;
    if (count == 0) distinct_.erase(value);
  }
  void add(std::uint32_t counted, int by) {
    const long double number = numbers_(counted);
    if (std::isnan(number)) return;
    count_ += by;
    sum_ = count_ == 0 ? 0 : sum_ + by * number;
  }

  const rule_correlation& c_;
  const number_of_counted& numbers_;
  std::int64_t count_ = 0;  // of hits, or of numbers in the sum
  long double sum_ = 0;
  std::unordered_map<std::uint32_t, std::int64_t> distinct_;
};

std::size_t completing_hit(const rule_correlation& c, hits_view hits,
                           const number_of_counted& numbers, std::size_t first, std::size_t last) {
  window_count count(c, numbers);
  for (std::size_t i = first; i < last; ++i) {
    count.change(hits[i], 1);
    if (count.holds()) return i;
  }
  return last;
}

// Windows in which the condition holds.
std::vector<hit_span> counted_spans(const rule_correlation& c, hits_view hits,
                                    const number_of_counted& numbers) {
  std::vector<hit_span> out;
  window_count count(c, numbers);
  std::size_t end = 0;  // behind the window
  for (std::size_t i = 0; i < hits.size(); ++i) {
    if (i != 0) count.change(hits[i - 1], -1);
    const std::size_t old_end = end;
    while (end < hits.size() && hits[end].time - hits[i].time <= timespan_of(c)) {
      count.change(hits[end++], 1);
    }
    if (end == old_end || !count.holds()) continue;
    // Of overlapping windows, only the first is evaluated again from its start.
    const bool fresh = out.empty() || out.back().last < i;
    out.push_back({i, end - 1, fresh ? completing_hit(c, hits, numbers, i, end - 1) : end - 1});
  }
  return out;
}

// Rules in order: for each number of rules, up to the one asked for, and each rule as the last one,
// the start of the latest chain of them.
class chains {
 public:
  enum class keep : unsigned char { what_is_needed, all };
  chains(std::size_t slots, std::size_t needed, keep what = keep::what_is_needed)
      : slots_(slots),
        needed_(needed),
        all_of_them_(needed == slots && what == keep::what_is_needed) {
    if (needed_ <= slots_) starts_.resize(all_of_them_ ? slots_ : needed_ * slots_);
  }

  // Takes the hits of one event, which never follows itself. Returns the start of the latest whole
  // chain that ends here, plus 1, or 0.
  std::size_t take(hits_view hits, std::size_t first, std::size_t end) {
    if (needed_ > slots_) return 0;
    changes_.clear();
    std::size_t best = 0;
    for (std::size_t i = first; i < end; ++i) {
      const std::size_t slot = hits[i].slot;
      const std::size_t least = all_of_them_ ? slot + 1 : 1;
      for (std::size_t length = least; length <= std::min(slot + 1, needed_); ++length) {
        const std::size_t start = length == 1 ? first + 1 : latest(length - 1, slot);
        changes_.push_back({index(length, slot), start});
        if (length == needed_) best = std::max(best, start);
      }
    }
    for (const auto& [where, start] : changes_) starts_[where] = std::max(starts_[where], start);
    return best;
  }

  // Rules in the longest chain that starts with hit `first` or later; needs keep::all.
  std::size_t longest_from(std::size_t first) const {
    std::size_t length = needed_;
    while (length != 0 && latest(length, slots_) <= first) --length;
    return length;
  }

 private:
  std::size_t index(std::size_t length, std::size_t slot) const {
    return all_of_them_ ? slot : (length - 1) * slots_ + slot;
  }
  // The latest start of a chain of that length that ends with a rule before `slot`.
  std::size_t latest(std::size_t length, std::size_t slot) const {
    if (all_of_them_) return starts_[slot - 1];
    std::size_t best = 0;
    for (std::size_t s = 0; s < slot; ++s) best = std::max(best, starts_[index(length, s)]);
    return best;
  }

  std::size_t slots_, needed_;
  bool all_of_them_;                 // only chains of all rules so far count, one for each rule
  std::vector<std::size_t> starts_;  // hits, plus 1; 0: no chain
  std::vector<std::pair<std::size_t, std::size_t>> changes_;
};

std::size_t end_of_event(hits_view hits, std::size_t first) {
  std::size_t end = first + 1;
  while (end < hits.size() && hits[end].repeats) ++end;
  return end;
}

// The event of the window with which the number of rules in order came to be what is asked for.
std::size_t completing_event(const rule_correlation& c, hits_view hits, std::size_t first,
                             std::size_t last) {
  chains known(c.rules.size(), c.rules.size(), chains::keep::all);
  for (std::size_t i = first; i < last;) {
    const std::size_t end = end_of_event(hits, i);
    known.take(hits, i, end);
    if (holds(c, static_cast<long double>(known.longest_from(first)))) return end - 1;
    i = end;
  }
  return last;
}

// Windows in which the number of rules that matched in their order is what is asked for.
std::vector<hit_span> ordered_windows(const rule_correlation& c, hits_view hits) {
  std::vector<hit_span> out;
  chains known(c.rules.size(), c.rules.size(), chains::keep::all);
  std::size_t end = 0;  // behind the window
  for (std::size_t i = 0; i < hits.size(); ++i) {
    const std::size_t old_end = end;
    while (end < hits.size() && hits[end].time - hits[i].time <= timespan_of(c)) {
      const std::size_t next = end_of_event(hits, end);
      known.take(hits, end, next);
      end = next;
    }
    if (end == old_end || !holds(c, static_cast<long double>(known.longest_from(i)))) continue;
    const bool fresh = out.empty() || out.back().last < i;
    out.push_back({i, end - 1, fresh ? completing_event(c, hits, i, end - 1) : end - 1});
  }
  return out;
}

// Chains of at least as many rules as are asked for, the shortest of them.
std::vector<hit_span> ordered_spans(const rule_correlation& c, hits_view hits) {
  std::vector<hit_span> out;
  chains known(c.rules.size(), c.ordered_rules_needed());
  for (std::size_t i = 0; i < hits.size();) {
    const std::size_t end = end_of_event(hits, i);
    const std::size_t start = known.take(hits, i, end);
    if (start != 0 && hits[i].time - hits[start - 1].time <= timespan_of(c)) {
      out.push_back({start - 1, end - 1, end - 1});
    }
    i = end;
  }
  std::stable_sort(out.begin(), out.end(), [](const hit_span& a, const hit_span& b) {
    return a.first != b.first ? a.first < b.first : a.last < b.last;
  });
  return out;
}

std::vector<hit_span> merged(const std::vector<hit_span>& spans, hits_view hits) {
  std::vector<hit_span> out;
  for (const hit_span& span : spans) {
    if (!out.empty() && span.first <= out.back().last) {
      out.back().last = std::max(out.back().last, span.last);
    } else {
      out.push_back(span);
    }
  }
  for (hit_span& span : out) {
    for (const correlation_hit& hit : hits.subspan(span.first, span.last - span.first + 1)) {
      span.events += hit.repeats ? 0 : 1;
    }
  }
  return out;
}

// The share, in percent, of a hit's value among those of the timespan that ends with it. Hits with
// one value that are at most the timespan apart are one match.
std::vector<hit_span> share_spans(const rule_correlation& c, hits_view hits) {
  std::vector<hit_span> out;
  std::unordered_map<std::uint32_t, std::uint64_t> counts;
  std::unordered_map<std::uint32_t, std::size_t> match_of;  // by value: its latest one in `out`
  std::uint64_t all = 0;
  std::size_t begin = 0;
  for (std::size_t i = 0; i < hits.size(); ++i) {
    if (hits[i].counted == 0 || hits[i].repeats) continue;
    for (; hits[i].time - hits[begin].time > timespan_of(c); ++begin) {
      if (hits[begin].counted == 0 || hits[begin].repeats) continue;
      --counts[hits[begin].counted];
      --all;
    }
    ++all;
    const auto share =
        100 * static_cast<long double>(++counts[hits[i].counted]) / static_cast<long double>(all);
    if (!holds(c, share)) continue;
    const auto [known, fresh] = match_of.try_emplace(hits[i].counted, out.size());
    if (fresh || hits[i].time - hits[out[known->second].last].time > timespan_of(c)) {
      known->second = out.size();
      out.push_back({i, i, i, 1});
    } else {
      out[known->second].last = i;
      ++out[known->second].events;
    }
  }
  return out;
}

}  // namespace

std::vector<hit_span> spans_that_hold(const rule_correlation& c, hits_view hits,
                                      const number_of_counted& numbers) {
  if (c.what == kind::value_percentile) return share_spans(c, hits);
  if (c.what == kind::temporal_ordered) {
    const bool at_least = c.ordered_rules_needed() != 0;
    return merged(at_least ? ordered_spans(c, hits) : ordered_windows(c, hits), hits);
  }
  return merged(counted_spans(c, hits, numbers), hits);
}

}  // namespace zanvik::sigma
