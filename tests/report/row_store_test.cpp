// Which rows a page keeps: the newest of the longest tables, all of the short ones.
#include "report/row_store.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>

namespace zanvik::testing {
namespace {

struct given_row {
  std::size_t table;
  std::uint64_t time;
};

row_store stored(const std::vector<given_row>& rows, std::size_t tables, std::size_t most) {
  row_store store(most, 1 << 20);
  for (std::size_t i = 0; i < tables; ++i) store.add_table(1);
  for (const given_row& row : rows) {
    const std::string text = "row " + std::to_string(row.time);
    const std::string_view cell = text;
    // Times are different here, so that the order of arrival decides nothing.
    store.add(row.table, {row.time, 0, row.time, 0}, std::span(&cell, 1));
  }
  store.finish();
  return store;
}

std::vector<std::uint64_t> times_of(const stored_table& table) {
  std::vector<std::uint64_t> times;
  for (const row_place& place : table.places) times.push_back(place.time);
  return times;
}

TEST(row_store, short_tables_are_whole_and_long_ones_keep_their_newest_rows) {
  std::vector<given_row> rows;
  for (std::uint64_t i = 0; i < 500; ++i) rows.push_back({0, 1000 + i});
  for (std::uint64_t i = 0; i < 100; ++i) rows.push_back({1, 3000 + i});
  for (std::uint64_t i = 0; i < 7; ++i) rows.push_back({2, 10 + i});
  std::mt19937 random(7);
  std::vector<std::uint64_t> first_run;
  for (int run = 0; run < 20; ++run) {
    std::shuffle(rows.begin(), rows.end(), random);
    const row_store store = stored(rows, 4, 100);
    // 7 rows of one table leave 93 for two: 46 each.
    ASSERT_EQ(store.tables()[0].rows(), 46U);
    EXPECT_EQ(store.tables()[1].rows(), 46U);
    EXPECT_EQ(store.tables()[2].rows(), 7U);
    EXPECT_EQ(store.tables()[3].rows(), 0U);
    EXPECT_EQ(store.tables()[0].total, 500U);
    const auto times = times_of(store.tables()[0]);
    EXPECT_TRUE(std::is_sorted(times.begin(), times.end()));
    EXPECT_EQ(times.front(), 1454U);
    EXPECT_EQ(times.back(), 1499U);
    for (std::size_t row = 0; row < times.size(); ++row) {
      EXPECT_EQ(store.texts().text(store.tables()[0].cell(row, 0)),
                "row " + std::to_string(times[row]));
    }
  }
}

TEST(row_store, all_rows_stay_when_they_fit) {
  const row_store store = stored({{0, 3}, {0, 1}, {1, 2}}, 2, 3);
  EXPECT_EQ(times_of(store.tables()[0]), (std::vector<std::uint64_t>{1, 3}));
  EXPECT_EQ(times_of(store.tables()[1]), (std::vector<std::uint64_t>{2}));
}

TEST(row_store, texts_are_limited_as_they_are_written) {
  row_store store(1000, 20'000);
  store.add_table(1);
  store.add_table(1);
  for (std::uint64_t i = 0; i < 900; ++i) {
    const std::string text = std::string(50, '<') + std::to_string(i);  // 6 bytes each
    const std::string_view cell = text;
    store.add(0, {i + 1, i, i, 0}, std::span(&cell, 1));
  }
  const std::string_view small = "small";
  store.add(1, {1, 901, 1, 0}, std::span(&small, 1));
  store.finish();
  EXPECT_LE(store.texts().written_bytes(), 20'000U);
  EXPECT_GE(store.tables()[0].rows(), 20U);
  EXPECT_EQ(store.tables()[0].places.back().time, 900U);
  EXPECT_EQ(store.tables()[0].total, 900U);
  EXPECT_EQ(store.tables()[1].rows(), 1U);
}

TEST(row_store, equal_times_stay_in_the_order_of_reading) {
  row_store store(10, 1 << 20);
  store.add_table(1);
  for (const std::uint64_t sequence : {1, 2, 3}) {
    const std::string text = std::to_string(sequence);
    const std::string_view cell = text;
    store.add(0, {5, sequence, 0, 0}, std::span(&cell, 1));
  }
  store.finish();
  std::string order;
  for (std::size_t row = 0; row < 3; ++row) {
    order += store.texts().text(store.tables()[0].cell(row, 0));
  }
  EXPECT_EQ(order, "123");
}

}  // namespace
}  // namespace zanvik::testing
