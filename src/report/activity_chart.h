// Charts of each host's days, as SVG.
//
// A column is a day on which something happened; if there are too many of them, a week, a month or
// a year. Days without events have no column, so one wrong date does not stretch the chart; a line
// marks where some are left out. Above: all events, an hour a row, darker for more. Below: one lane
// for each group of questions, so that one cleared log is seen beside a million logons.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "report/activity.h"

namespace zanvik {

struct chart_column {
  std::uint32_t first = 0, end = 0;  // days since 1601-01-01; `end` is behind the last
};

struct chart_axis {
  std::string_view unit = "day";      // "week", "month", "year"
  std::vector<chart_column> columns;  // by time

  // The column of a day, or the number of columns.
  std::size_t column_of(std::uint32_t day) const;
};
chart_axis make_axis(const activity& counts);

// What one host did, by column of the axis.
struct host_chart {
  std::uint32_t host = 0;
  std::vector<std::uint64_t> hours;   // 24 for each column
  std::vector<std::uint64_t> groups;  // most_groups for each column
  std::uint64_t uncharted = 0;        // events whose column is left out

  std::uint64_t total_of(std::size_t group) const;
};
host_chart make_host_chart(const activity& counts, const chart_axis& axis, std::uint32_t host);

// The hosts that get a chart: those with the most events, in the order of their names.
std::vector<std::uint32_t> charted_hosts(const activity& counts);

// The chart of one host, with its labels.
std::string chart_html(const activity& counts, const chart_axis& axis, const host_chart& chart);
// What the page's script needs to know: {"unit", "starts", "ends", "groups", "hosts": [{"hours":
// [column, hour, events, ...], "lanes": [[column, events, ...], ...]}, ...]}
std::string charts_json(const chart_axis& axis, const std::vector<host_chart>& charts);

}  // namespace zanvik
