// Times as text, and the fast way compared with the plain one.
#include "base/time_format.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "base/time_parse.h"
#include "base/time_writer.h"

namespace zanvik {
namespace {

qx::time at(std::uint64_t filetime) { return {filetime, qx::type_time::filetime}; }

const qx::time sample = at(parse_iso8601("2012-03-01T04:05:06.1234567Z"));

TEST(qx_time_format, by_the_format_strings) {
  const std::tuple<std::string, std::string, std::string, std::string> rows[] = {
      {"yyyy-mm-dd", "hh:mm:ss.xxx", "2012-03-01", "04:05:06.123"},
      {"mm/dd/yy", "hh:mm:ss.xxxx", "03/01/12", "04:05:06.1234"},
      {"dd-mmm-yyyy", "hh:mm:ss.xxxxx", "01-Mar-2012", "04:05:06.12345"},
      {"mmm dd, yyyy", "hh:mm:ss.xxxxxx", "Mar 01, 2012", "04:05:06.123456"},
      {"dd mm, yyyy", "hh:mm:ss.xxxxxxxx", "01 03 2012", "04:05:06.12345670"},  // day first
      {"yyyy-dd-mm", "hh:mm:ss.xxxxxxxxx", "2012-01-03", "04:05:06.123456700"},
      {"mmddyyyy", "hh:mm:ss.xxxxxxxxxx", "03/01/2012", "04:05:06"},  // ten digits are none
      {"mm-yyyy", "hh:mm", "03/01/2012", "04:05"},  // a part is missing: all three, with /
      {"yy/mm/dd", "hh:mm:ss.xx", "12/03/01", "04:05:06"},
      {"", "hh:mm:ss", "kept", "04:05:06"},
      {"yyyy-mm-dd", "", "2012-03-01", "kept"},
  };
  for (const auto& [date_format, time_format, expected_date, expected_time] : rows) {
    std::string date = "kept", time = "kept";
    EXPECT_TRUE(format_with_strings(date, time, sample, date_format, time_format));
    EXPECT_EQ(date, expected_date) << date_format;
    EXPECT_EQ(time, expected_time) << time_format;
  }
  std::string date = "kept", time = "kept";
  EXPECT_FALSE(format_with_strings(date, time, at(0), "yyyy-mm-dd", "hh:mm:ss"));
  EXPECT_EQ(date + time, "keptkept");
}

TEST(qx_time_format, by_the_digest) {
  // Whether the digest is complete, its fraction's digits, whether it prints, and what.
  const std::tuple<std::string, std::string, bool, unsigned, bool, std::string, std::string>
      rows[] = {
          {"yyyy-mm-dd", "hh:mm:ss.xxx", true, 3, true, "2012-03-01", "04:05:06.123"},
          // The full year, although two digits were requested.
          {"mm/dd/yy", "hh:mm:ss", true, 0, true, "03/01/2012", "04:05:06"},
          {"dd-mmm-yyyy", "hh:mm:ss.xxxxxxxxx", true, 9, true, "01-Mar-2012", "04:05:06.123456700"},
          // Ten digits are nine here.
          {"mmm dd, yyyy", "hh:mm:ss.xxxxxxxxxx", true, 9, true, "Mar 01 2012",
           "04:05:06.123456700"},
          // This order has no form with a name.
          {"yyyy-mmm-dd", "hh:mm:ss", true, 0, true, "", "04:05:06"},
          {"yyyy-dd-mm", "hh:mm:ss.xxxx", false, 4, true, "", "04:05:06.1234"},
          {"mm-yyyy-dd", "", false, 0, true, "", "04:05:06"},
          {"yyyy/mm", "hh:mm:ss", false, 0, true, "", "04:05:06"},
          // No separator: the default form.
          {"yyyymmdd", "hh:mm:ss", true, 0, false, "2012-03-01", "04:05:06.123"},
          {"", "", true, 0, false, "2012-03-01", "04:05:06.123"},
      };
  for (const auto& [date_format, time_format, complete, digits, prints, date, time] : rows) {
    format_descriptor descriptor;
    EXPECT_EQ(build_format_descriptor(descriptor, date_format, time_format, true), complete)
        << date_format;
    EXPECT_EQ(descriptor.fraction_digits(), digits) << date_format;
    std::string day = "gone", hour = "gone";
    EXPECT_EQ(format_with_descriptor(day, hour, sample, descriptor), prints) << date_format;
    EXPECT_EQ(day + " " + hour, date + " " + time) << date_format;
    EXPECT_FALSE(format_with_descriptor(day, hour, at(1), descriptor));
    EXPECT_EQ(day + hour, "");
  }
}

TEST(qx_time_format, default_and_value_forms) {
  std::string date, time;
  format_default(date, time, sample, true, true, true);
  EXPECT_EQ(date + " " + time, "12-03-01 04:05:06.123456700");
  format_default(date, time, at(parse_iso8601("1999-12-31T00:00:00")), false, true, true);
  EXPECT_EQ(date + " " + time, "99-12-31 00:00:00");

  std::string value;
  qx::_windows_systemtime parts = sample.system_time();
  parts.day = parts.year = parts.millisecond = 65535;  // as a damaged log may have it
  format_system_value(value, parts);
  EXPECT_EQ(value, "03/65535/65535 : 04:05:06.65535");

  EXPECT_TRUE(format_filetime_value(value, 1));
  EXPECT_EQ(value, " ");
  EXPECT_FALSE(format_filetime_value(value, 0));
}

// Instants at which a day, a year, an epoch or the range ends, and steps through the rest.
std::vector<std::uint64_t> many_instants() {
  std::vector<std::uint64_t> instants = {0, 1, ~0ull, 1ull << 63, (1ull << 63) - 1};
  const auto around = [&](std::uint64_t instant) {
    for (const std::uint64_t by : {qx::ticks_per_second, std::uint64_t{1}}) {
      instants.insert(instants.end(), {instant - by, instant, instant + by});
    }
  };
  around(qx::unix_epoch_filetime);
  around(qx::first_valid_filetime);
  for (std::int64_t year = 1895; year < 2110; ++year) {
    for (const std::int64_t month : {1, 2, 3}) {
      around(loose_to_filetime({.year = year, .month = month, .day = 1}));
    }
    around(loose_to_filetime({.year = year, .month = 2, .day = 28, .hour = 24}));
  }
  for (const std::int64_t year : {9999, 10000, 30000}) {
    around(loose_to_filetime({.year = year, .month = 1, .day = 1}));
  }
  for (std::uint64_t t = qx::first_valid_filetime; t >> 63 == 0; t += 20'000'000'007'654'321) {
    instants.insert(instants.end(), {t, t + 1'234'567});  // the second on the cached day
  }
  return instants;
}

TEST(qx_time_fast, cells_agree_with_the_plain_way) {
  const auto instants = many_instants();
  for (const char* date_format : {"yyyy-mm-dd", "mm/dd/yy", "dd-mmm-yyyy", "mmm dd, yyyy",
                                  "yyyy-mmm-dd", "yyyy-dd-mm", "yyyymmdd", ""}) {
    for (const char* time_format :
         {"hh:mm:ss", "hh:mm:ss.xxx", "hh:mm:ss.xxxxxxx", "hh:mm:ss.xxxxxxxxx"}) {
      format_descriptor descriptor;
      (void)build_format_descriptor(descriptor, date_format, time_format, false);
      cell_time_formatter cells(descriptor);
      std::string date, time;
      for (const auto instant : instants) {
        const bool result = format_with_descriptor(date, time, at(instant), descriptor);
        ASSERT_EQ(cells.format(instant), result) << date_format << instant;
        ASSERT_EQ(cells.date(), date) << instant;
        ASSERT_EQ(cells.time(), time) << instant;
      }
    }
  }
}

TEST(qx_time_fast, values_agree_with_the_plain_way) {
  filetime_writer writer;
  std::string plain;
  char text[filetime_text_room];
  for (const auto instant : many_instants()) {
    (void)format_filetime_value(plain, instant);
    ASSERT_EQ(std::string(text, writer.write(text, instant)), plain) << instant;
    ASSERT_EQ(std::string(text, write_filetime_fixed(text, instant)), plain) << instant;
  }
}

}  // namespace
}  // namespace zanvik
