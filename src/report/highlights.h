// What stands out in the tables: sentences with the rows behind them.
//
// In: collected rows, after `finish`. Out: facts that an examiner would ask for first; the gravest
// come first, and of these the earliest. They are worked out from the rows that the page holds, so
// that a reader finds them there. Nothing here is a verdict.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "report/collector.h"

namespace zanvik {

enum class highlight_weight : std::uint8_t { high, middle, plain };

struct highlight {
  highlight_weight weight = highlight_weight::plain;
  std::string text;                   // visible text
  std::string_view table;             // where its rows are
  std::string find;                   // what to search there; may be empty
  std::uint64_t first = 0, last = 0;  // FILETIMEs of its rows
};

std::vector<highlight> find_highlights(const report_collector& collected);

}  // namespace zanvik
