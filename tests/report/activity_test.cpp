// Counts by host, day and hour, and the columns of their chart.
#include "report/activity.h"

#include <gtest/gtest.h>

#include <numeric>

#include "base/time_value.h"
#include "byte_builder.h"
#include "report/activity_chart.h"
#include "report/report_limits.h"
#include "report/report_times.h"

namespace zanvik::testing {
namespace {

constexpr std::uint64_t day = qx::ticks_per_day;

TEST(report_times, days_and_dates) {
  EXPECT_EQ(date_text(0), "1601-01-01");
  EXPECT_EQ(date_text(day_of({2024, 2, 29})), "2024-02-29");
  EXPECT_EQ(date_text(day_of({2024, 2, 29}) + 1), "2024-03-01");
  EXPECT_EQ(time_text(filetime(2024, 3, 9, 1, 2, 3)), "2024-03-09 01:02:03");
  EXPECT_EQ(time_text(0), "-");
  EXPECT_EQ(unix_milliseconds(filetime(1970, 1, 1)), 0);
  EXPECT_EQ(unix_milliseconds(filetime(1969, 12, 31, 23, 59, 59)), -1000);
  // A crafted time may be any number.
  EXPECT_EQ(time_text(UINT64_MAX).size(), std::string("60000-01-01 00:00:00").size());
}

TEST(activity, counts_by_host_day_hour_and_group) {
  activity counts;
  const std::uint32_t a = counts.host_number("a"), b = counts.host_number("b");
  EXPECT_EQ(counts.host_number("a"), a);
  counts.add(a, filetime(2024, 3, 9, 0, 59, 59), 1);
  counts.add(a, filetime(2024, 3, 9, 1, 0, 0), no_group);
  counts.add(b, filetime(2024, 3, 9, 23, 0, 0), 1);
  counts.add(a, 0, 1);
  ASSERT_EQ(counts.days().size(), 2U);
  EXPECT_EQ(counts.days()[0].hours[0], 1U);
  EXPECT_EQ(counts.days()[0].hours[1], 1U);
  EXPECT_EQ(counts.days()[0].groups[1], 1U);
  EXPECT_EQ(counts.days()[1].hours[23], 1U);
  EXPECT_EQ(counts.events_of(a), 3U);
  EXPECT_EQ(counts.events(), 4U);
  EXPECT_EQ(counts.uncharted(), 1U);  // without a time
  EXPECT_EQ(counts.first(), filetime(2024, 3, 9, 0, 59, 59));
  EXPECT_EQ(counts.last(), filetime(2024, 3, 9, 23, 0, 0));
}

TEST(activity, hosts_and_days_are_limited_and_all_events_are_counted) {
  activity counts;
  const std::size_t many = report_limits::host_days + 1000;
  for (std::size_t i = 0; i < many; ++i) {
    counts.add(counts.host_number("host " + std::to_string(i % 5000)), (1 + i) * day, 0);
  }
  EXPECT_EQ(counts.hosts().size(), report_limits::hosts + 1);
  EXPECT_EQ(counts.hosts().back(), "[other hosts]");
  EXPECT_EQ(counts.days().size(), report_limits::host_days);
  EXPECT_EQ(counts.uncharted(), 1000U);
  std::uint64_t events = 0;
  for (std::uint32_t i = 0; i < counts.hosts().size(); ++i) events += counts.events_of(i);
  EXPECT_EQ(events, many);
}

// Columns are as fine as they fit, and every event is in one.
TEST(activity_chart, columns_are_days_weeks_months_or_years) {
  const struct {
    std::uint64_t days, every;
    std::string_view unit;
    std::size_t columns;
  } rows[] = {
      {1, 1, "day", 1},         {370, 1, "day", 370},  {370, 30, "day", 370},
      {371, 1, "week", 53},     {371, 7, "month", 86}, {371, 400, "year", 370},
      {4000, 400, "year", 370},
  };
  for (const auto& row : rows) {
    activity counts;
    const std::uint32_t host = counts.host_number("a");
    // From a Monday.
    const std::uint64_t first = filetime(2018, 1, 1, 12);
    for (std::uint64_t i = 0; i < row.days; ++i) counts.add(host, first + i * row.every * day, 2);
    const chart_axis axis = make_axis(counts);
    EXPECT_EQ(axis.unit, row.unit) << row.days << " " << row.every;
    EXPECT_EQ(axis.columns.size(), row.columns) << row.days << " " << row.every;
    for (std::size_t i = 1; i < axis.columns.size(); ++i) {
      EXPECT_LE(axis.columns[i - 1].end, axis.columns[i].first);
    }
    const host_chart chart = make_host_chart(counts, axis, host);
    EXPECT_EQ(std::accumulate(chart.hours.begin(), chart.hours.end(), chart.uncharted), row.days);
    EXPECT_EQ(chart.total_of(2) + chart.uncharted, row.days);
    EXPECT_EQ(chart.total_of(3), 0U);
  }
}

TEST(activity_chart, a_day_that_is_left_out_has_no_column) {
  activity counts;
  const std::uint32_t host = counts.host_number("a");
  for (const int date : {4, 5, 8}) counts.add(host, filetime(2024, 3, date, 1), 0);
  const chart_axis axis = make_axis(counts);
  ASSERT_EQ(axis.columns.size(), 3U);
  const std::uint32_t fourth = day_of({2024, 3, 4});
  EXPECT_EQ(axis.column_of(fourth), 0U);
  EXPECT_EQ(axis.column_of(fourth + 4), 2U);
  EXPECT_EQ(axis.column_of(fourth + 2), 3U);
  EXPECT_EQ(axis.column_of(fourth - 1), 3U);
  const std::string html = chart_html(counts, axis, make_host_chart(counts, axis, host));
  EXPECT_NE(html.find("<path class=\"gap\" d=\"M2 0v24\"/>"), std::string::npos);
  EXPECT_NE(html.find("<path class=\"h5\" d=\"M0 1h1v1h-1zM1 1h1v1h-1zM2 1h1v1h-1z\"/>"),
            std::string::npos);
}

TEST(activity_chart, hosts_with_most_events_have_one) {
  activity counts;
  for (int i = 0; i < 20; ++i) {
    const std::uint32_t host = counts.host_number("host " + std::to_string(i));
    for (int n = 0; n <= i; ++n) counts.add(host, day, 0);
  }
  const auto hosts = charted_hosts(counts);
  ASSERT_EQ(hosts.size(), report_limits::charted_hosts);
  EXPECT_EQ(hosts.front(), 19U);
}

}  // namespace
}  // namespace zanvik::testing
