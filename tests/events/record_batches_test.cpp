// Records of the parts of a log that were kept in containers of their own and joined.
#include <gtest/gtest.h>

#include <algorithm>

#include "events/log_record.h"

namespace zanvik::testing {
namespace {

// A record with one value, the text of its number.
void add_record(record_container& to, std::uint64_t time, std::uint64_t number,
                std::string_view provider) {
  LogRecord record;
  record.time = time;
  record.record_number = number;
  record.provider = to.intern_text(provider);
  record.shape = to.intern_shape({.columns = {{"Value", false, {}}}, .value_count = 1});
  const std::string text = std::to_string(number);
  char* const cell = to.arena().reserve(text.size() + max_cell_head);
  text.copy(cell + 1, text.size());
  to.arena().keep(
      static_cast<std::size_t>(finish_cell(cell, cell + 1 + text.size(), false) - cell));
  record.values = cell;
  to.add(record);
}

record_batch batch_of(record_container& part, const record_container& whole,
                      const std::vector<std::uint64_t>& times, std::uint64_t first_number) {
  part.share_with(whole);
  for (std::size_t i = 0; i < times.size(); ++i) {
    add_record(part, times[i], first_number + i, "Provider " + std::to_string(times[i] % 2));
  }
  return part.take();
}

std::vector<std::uint64_t> numbers(record_container& records) {
  std::vector<std::uint64_t> result;
  for (const LogRecord* record : records.in_time_order()) {
    result.push_back(record->record_number);
    EXPECT_EQ(columns_of(*record).at("Value"), std::to_string(record->record_number));
  }
  return result;
}

TEST(record_batches, join_in_order_of_time_and_then_of_position) {
  const struct {
    const char* what;
    std::vector<std::uint64_t> first, second;
    std::vector<std::uint64_t> numbers;  // the second batch has 100 and up
  } rows[] = {
      {"in order", {1, 2}, {2, 3}, {0, 1, 100, 101}},
      {"the second reaches back", {1, 5, 7}, {5, 6, 7}, {0, 1, 100, 101, 2, 102}},
      {"each out of order", {9, 1, 4}, {4, 0, 9}, {101, 1, 2, 100, 0, 102}},
      {"a ring: the second is older", {5, 6, 7, 8, 9, 10}, {1}, {100, 0, 1, 2, 3, 4, 5}},
      {"nothing in the first", {}, {3, 2}, {101, 100}},
  };
  for (const auto& row : rows) {
    record_container whole, part, other;
    whole.add(batch_of(part, whole, row.first, 0));
    whole.add(batch_of(other, whole, row.second, 100));
    part.clear();  // what it gave away does not need it
    EXPECT_EQ(numbers(whole), row.numbers) << row.what;
  }
}

TEST(record_batches, share_their_texts_and_shapes) {
  record_container whole, part, other;
  whole.add(batch_of(part, whole, {1}, 0));
  record_batch late = batch_of(other, whole, {3}, 100);
  whole.add(batch_of(part, whole, {5}, 1));
  whole.clear();  // with what they shared
  whole.add(batch_of(part, whole, {7}, 2));
  whole.add(std::move(late));
  const auto records = whole.in_time_order();
  ASSERT_EQ(records.size(), 2u);
  EXPECT_EQ(records[0]->record_number, 100u);
  EXPECT_EQ(records[0]->provider, records[1]->provider) << "one text, though made in two stores";
  EXPECT_EQ(records[0]->shape, records[1]->shape);
  EXPECT_EQ(*records[0]->provider, "Provider 1");
}

TEST(record_batches, a_part_goes_on_in_the_memory_of_its_last_batch) {
  record_container whole, part;
  for (std::uint64_t i = 0; i < 50; ++i) {
    const std::vector<std::uint64_t> times(200, i);
    whole.add(batch_of(part, whole, times, 200 * i));
  }
  const std::vector<std::uint64_t> found = numbers(whole);
  ASSERT_EQ(found.size(), 10000u);
  EXPECT_TRUE(std::is_sorted(found.begin(), found.end()));
}

}  // namespace
}  // namespace zanvik::testing
