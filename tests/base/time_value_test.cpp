// The instant, its parts, and the text it is read from.
#include "base/time_value.h"

#include <gtest/gtest.h>

#include <ctime>
#include <string>

#include "base/time_parse.h"

namespace zanvik {
namespace {

using qx::ticks_per_day;
using qx::ticks_per_second;
using qx::unix_epoch_filetime;

qx::time at(std::uint64_t filetime) { return {filetime, qx::type_time::filetime}; }

// The FILETIME of a date, as the system's own calendar has it.
std::uint64_t day_start(int year, int month, int day) {
  std::tm parts{};
  parts.tm_year = year - 1900;
  parts.tm_mon = month - 1;
  parts.tm_mday = day;
  return static_cast<std::uint64_t>(timegm(&parts)) * ticks_per_second + unix_epoch_filetime;
}

TEST(qx_time, validity) {
  const std::tuple<std::uint64_t, bool, bool> rows[] = {
      {0, false, false},
      {1, false, true},                          // 1601
      {day_start(1900, 1, 1) - 1, false, true},  // the end of 1899
      {day_start(1900, 1, 1), true, true},
      {unix_epoch_filetime - 1, true, true},
      {unix_epoch_filetime, false, false},  // the first second of 1970 is none
      {unix_epoch_filetime + ticks_per_second - 1, false, false},
      {unix_epoch_filetime + ticks_per_second, true, false},
      {0x7fffffffffffffff, true, false},  // no upper bound but the sign
      {0x8000000000000000, false, false},
      {~0ull, false, false},
  };
  for (const auto& [filetime, valid, before_epoch] : rows) {
    EXPECT_EQ(at(filetime).valid(), valid) << filetime;
    EXPECT_EQ(is_valid_filetime(filetime), valid) << filetime;
    EXPECT_EQ(at(filetime).before_unix_epoch(), before_epoch) << filetime;
    EXPECT_EQ(at(filetime).filetime(), filetime);
  }
}

TEST(qx_time, unix_seconds_go_in_and_come_out) {
  const qx::time time(1330605296, qx::type_time::unix_time);
  EXPECT_TRUE(time.valid());
  EXPECT_EQ(time.unix_seconds(), 1330605296);
  EXPECT_EQ(time.filetime(), 129750788960000000u);
  EXPECT_EQ(qx::time(0, qx::type_time::unix_time).filetime(), 0u);
  EXPECT_EQ(qx::time(~0ull, qx::type_time::unix_time).filetime(), 0u);
  EXPECT_GT(qx::time::now().filetime(), day_start(2024, 1, 1));
}

TEST(qx_time, parts_agree_with_the_systems_calendar) {
  // Every 17 days and some, so that all days of the 400-year cycle, months and hours come by.
  const std::uint64_t step = 17 * ticks_per_day + 7'919 * ticks_per_second + 1'234'567;
  for (std::uint64_t filetime = 0; filetime < day_start(2500, 1, 1); filetime += step) {
    const auto parts = system_from_filetime(filetime);
    const auto seconds = static_cast<std::time_t>(filetime / ticks_per_second) -
                         static_cast<std::time_t>(unix_epoch_filetime / ticks_per_second);
    std::tm tm{};
    gmtime_r(&seconds, &tm);
    ASSERT_EQ(parts.year, tm.tm_year + 1900) << filetime;
    ASSERT_EQ(parts.month, tm.tm_mon + 1) << filetime;
    ASSERT_EQ(parts.day, tm.tm_mday) << filetime;
    ASSERT_EQ(parts.day_of_week, tm.tm_wday) << filetime;
    ASSERT_EQ(parts.hour * 3600 + parts.minute * 60 + parts.second,
              tm.tm_hour * 3600 + tm.tm_min * 60 + tm.tm_sec);
    ASSERT_EQ(parts.picoseconds, filetime % ticks_per_second * 100'000);
    ASSERT_EQ(parts.nanoseconds, parts.picoseconds / 1'000);
    ASSERT_EQ(parts.microseconds, parts.picoseconds / 1'000'000);
    ASSERT_EQ(system_to_filetime(parts), filetime - filetime % 10'000) << filetime;
  }
}

TEST(qx_time, loose_parts_carry) {
  const std::tuple<loose_time, std::uint64_t> rows[] = {
      {{.year = 2013, .month = 2, .day = 29}, day_start(2013, 3, 1)},
      {{.year = 2013, .month = 0, .day = 31}, day_start(2012, 12, 31)},
      {{.year = 2013, .month = 25, .day = 1}, day_start(2015, 1, 1)},
      {{.year = 2013, .month = -12, .day = 1}, day_start(2011, 12, 1)},
      {{.year = 2012, .month = 2, .day = 29, .hour = 24}, day_start(2012, 3, 1)},
      {{.year = 2012, .month = 3, .day = 1, .millisecond = -1}, day_start(2012, 3, 1) - 10'000},
      {{.year = 1600, .month = 12, .day = 31}, 0 - ticks_per_day},
  };
  for (const auto& [parts, filetime] : rows) EXPECT_EQ(loose_to_filetime(parts), filetime);
}

TEST(qx_time, dos_words) {
  using words = std::pair<std::uint16_t, std::uint16_t>;
  const auto date = static_cast<std::uint16_t>(32 * 512 + 3 * 32 + 1);
  const auto second = [](int s) { return day_start(2012, 3, 1) + s * ticks_per_second; };
  EXPECT_EQ(at(second(13 * 3600 + 5 * 60 + 7)).dos_time(), words(date, 13 * 2048 + 5 * 32 + 4));
  EXPECT_EQ(at(second(59)).dos_time(), words(date, 30));  // rounded up
  EXPECT_EQ(at(day_start(1979, 12, 31)).dos_time(), words());
  EXPECT_EQ(at(day_start(2038, 1, 1)).dos_time(), words());
}

TEST(qx_time, dates_as_typed) {
  // `filetime`: 0: not valid
  const std::tuple<std::string, std::uint64_t> rows[] = {
      {"03/01/2012 12:34:56", day_start(2012, 3, 1) + 45'296 * ticks_per_second},
      {"15-MAR-2012", day_start(2012, 3, 15)},  // a name in the middle: the day is in front
      {"02/29/2013", day_start(2013, 3, 1)},    // the days of a month are not checked
      {"1/2/12", day_start(2012, 1, 2)},
      {"1/2/30", day_start(2030, 1, 2)},
      {"1/2/31", day_start(1931, 1, 2)},
      {"1/2/20125", day_start(2012, 1, 2)},             // four characters of the year
      {"1/2/2012 12:00:00 pm", day_start(2012, 1, 3)},  // hour 24
      {"1/2/2012 12:30 am", day_start(2012, 1, 2) + 45'000 * ticks_per_second},
      {"1/2/2012 1:00 PM", day_start(2012, 1, 2) + 46'800 * ticks_per_second},
      {"1/2/2012 0:00:01.999", day_start(2012, 1, 2) + ticks_per_second},  // whole seconds
      {"2012-03-01", 0},                                                   // the front is too long
      {"13/1/2012", 0},
      {"1/32/2012", 0},
      {"1/2/", 0},
      {"1/0002/2012", 0},
      {"1/2/2012 12", 0},   // no colon
      {"1/2/2012 12:", 0},  // no minutes
      {"1/2/2012 inf:00", 0},
      {"1/2/2012 1:00:" + std::string(32, '0'), 0},  // a field of 32 characters
      {"1/2/1899", 0},
  };
  for (const auto& [text, filetime] : rows) {
    const qx::time time(text, true);
    EXPECT_EQ(time.valid(), filetime != 0) << text;
    if (time.valid()) {
      EXPECT_EQ(time.filetime(), filetime) << text;
    }
  }
}

TEST(qx_time, local_reading_comes_back_to_the_same_count) {
  setenv("TZ", "XYZ-3", 1);  // three hours ahead, all year
  tzset();
  EXPECT_EQ(local_offset_seconds(), 3 * 3600);
  const qx::time time("03/01/2012 12:00:00", false);
  EXPECT_EQ(time.filetime(), day_start(2012, 3, 1) + 12 * 3600 * ticks_per_second);
  std::tm local{};
  EXPECT_TRUE(time.local_time(local));
  EXPECT_EQ(local.tm_hour, 15);
  EXPECT_FALSE(at(day_start(1950, 1, 1)).local_time(local));
  setenv("TZ", "UTC", 1);
  tzset();
}

TEST(qx_time, dates_in_a_given_order) {
  // `filetime`: 0: refused
  const std::tuple<std::string, std::string, std::string, char, std::uint64_t> rows[] = {
      {"2012-03-01", "", "YMD", '-', day_start(2012, 3, 1)},
      {"01.03.12", "1:02:03.0456", "DMY", '.',
       day_start(2012, 3, 1) + 3'723 * ticks_per_second + 460'000},  // rounded to the millisecond
      {"1 march 99", "", "DMonY", ' ', day_start(1999, 3, 1)},
      {"0x7DC-3-1", "", "YMD", '-', day_start(2012, 3, 1)},  // numbers may have prefixes
      {"2012-0-31", "", "YMD", '-', day_start(2011, 12, 31)},
      {"2012-13-01", "", "YMD", '-', 0},
      {"2012-xy-01", "", "YMon", '-', 0},
      {"2012-ab-01", "", "YMD", '-', 0},
      {"", "", "YMD", '-', 0},
  };
  for (const auto& [date, time, order, separator, filetime] : rows) {
    qx::_windows_systemtime parts;
    EXPECT_EQ(parse_date_ymd(date, time, order, separator, parts), filetime != 0) << date;
    if (filetime != 0) {
      EXPECT_EQ(system_to_filetime(parts), filetime) << date;
    }
  }
}

TEST(qx_time, iso_dates) {
  EXPECT_EQ(parse_iso8601("2012-03-01"), day_start(2012, 3, 1));
  EXPECT_EQ(parse_iso8601("2012-03-01T12:34:56Z"),
            day_start(2012, 3, 1) + 45'296 * ticks_per_second);
  for (const char* bad : {"", "x", "2012-03-01T", "2012-03-01Tx", "2012-03-01T-1:00Z"}) {
    EXPECT_EQ(parse_iso8601(bad), 0u) << bad;
  }
  // Seven digits come through exactly.
  for (std::uint64_t ticks = 0; ticks < ticks_per_second; ticks += 9'973) {
    const std::string digits = std::to_string(ticks_per_second + ticks).substr(1);
    ASSERT_EQ(parse_iso8601("2012-03-01T00:00:59." + digits + "Z"),
              day_start(2012, 3, 1) + 59 * ticks_per_second + ticks);
  }
}

}  // namespace
}  // namespace zanvik
