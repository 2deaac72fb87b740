// The external sorter against a stable sort in memory, with and without runs, and its errors.
#include "pipeline/external_sorter.h"

#include <gtest/gtest.h>
#include <sys/resource.h>

#include <algorithm>
#include <csignal>
#include <filesystem>
#include <memory>
#include <random>
#include <utility>
#include <vector>

#include "pipeline/sorted_input.h"
#include "scratch_dir.h"

namespace zanvik::testing {
namespace {

using item = std::pair<sort_key, std::string>;

// Few different keys, so that most are equal to some other.
std::vector<item> random_items(std::size_t count, std::size_t largest) {
  std::mt19937 random(7);
  std::vector<item> items;
  for (std::size_t i = 0; i < count; ++i) {
    const sort_key key{{random() % 9, random() % 3, random() % 2}};
    std::string bytes = std::to_string(i) + " ";
    bytes.resize(random() % 5 == 0 ? 0 : random() % largest, 'x');
    items.emplace_back(key, bytes);
  }
  return items;
}

std::vector<item> stable_order(std::vector<item> items) {
  std::stable_sort(items.begin(), items.end(),
                   [](const item& a, const item& b) { return a.first < b.first; });
  return items;
}

std::vector<item> sorted_by(external_sorter& sorter, const std::vector<item>& items) {
  std::vector<item> out;
  for (const auto& [key, bytes] : items) EXPECT_TRUE(sorter.add(key, bytes)) << sorter.error();
  EXPECT_TRUE(sorter.finish([&](const sort_key& key, std::string_view bytes) {
    out.emplace_back(key, bytes);
    return true;
  })) << sorter.error();
  return out;
}

TEST(external_sorter, gives_the_order_of_a_stable_sort) {
  const scratch_dir scratch;
  struct row {
    std::size_t count, largest;
    std::uint64_t memory, runs_at_least;
  };
  for (const row& given : {row{0, 1, 1 << 20, 0}, row{1000, 90, 8 << 20, 0},
                           row{30'000, 200, 1 << 20, 3},      // one merge
                           row{40'000, 2000, 1 << 20, 40},    // more runs than buffers
                           row{20, 900'000, 1 << 20, 10}}) {  // items as large as the memory
    const auto items = random_items(given.count, given.largest);
    external_sorter sorter({given.memory, scratch.path("")});
    EXPECT_TRUE(sorted_by(sorter, items) == stable_order(items)) << given.count;
    EXPECT_GE(sorter.runs_written(), given.runs_at_least);
    EXPECT_EQ(sorter.runs_written() != 0, given.runs_at_least != 0);
    EXPECT_TRUE(std::filesystem::is_empty(scratch.path("")));
  }
}

TEST(external_sorter, starts_anew_when_it_is_done) {
  external_sorter sorter({least_sort_memory, ""});
  for (const std::size_t count : {std::size_t{9000}, std::size_t{10}, std::size_t{0}}) {
    const auto items = random_items(count, 500);
    EXPECT_TRUE(sorted_by(sorter, items) == stable_order(items)) << count;
  }
}

TEST(external_sorter, says_what_went_wrong_with_its_file) {
  const scratch_dir scratch;
  const std::string bytes(300'000, 'x');
  const auto fill = [&](external_sorter& sorter) {
    bool taken = true;
    for (int i = 0; i < 9; ++i) taken = sorter.add({}, bytes) && taken;
    return sorter.finish([](const sort_key&, std::string_view) { return true; }) || taken;
  };
  external_sorter nowhere({least_sort_memory, scratch.path("none")});
  EXPECT_FALSE(fill(nowhere));
  EXPECT_EQ(nowhere.error(),
            "temporary file in " + scratch.path("none") + ": No such file or directory");

  // As on a full disk, from the second run on.
  rlimit before{};
  ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &before), 0);
  const auto handler = std::signal(SIGXFSZ, SIG_IGN);
  const rlimit small{1'000'000, before.rlim_max};
  ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &small), 0);
  external_sorter full({least_sort_memory, scratch.path("")});
  EXPECT_FALSE(fill(full));
  ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &before), 0);
  std::signal(SIGXFSZ, handler);
  EXPECT_NE(full.error().find("File too large"), std::string::npos) << full.error();
}

// Items in memory, in order.
class listed_input : public sorted_input {
 public:
  explicit listed_input(std::vector<item> items) : items_(std::move(items)) {}
  bool next() override {
    if (next_ == items_.size()) return false;
    key_ = items_[next_++].first;
    return true;
  }
  std::string_view bytes() override { return items_[next_ - 1].second; }

 private:
  std::vector<item> items_;
  std::size_t next_ = 0;
};

TEST(sorted_input, many_are_merged_as_one_stable_sort) {
  for (const std::size_t count : {0u, 1u, 2u, 3u, 7u, 20u}) {
    std::vector<std::unique_ptr<listed_input>> inputs;
    std::vector<sorted_input*> all;
    std::vector<item> joined, merged;
    for (std::size_t i = 0; i < count; ++i) {
      auto items = stable_order(random_items(i % 5 == 4 ? 0 : 100 - 3 * i, 20));
      for (auto& [key, bytes] : items) bytes += " of " + std::to_string(i);
      joined.insert(joined.end(), items.begin(), items.end());
      all.push_back(inputs.emplace_back(std::make_unique<listed_input>(items)).get());
    }
    EXPECT_TRUE(merge_inputs(all, [&](const sort_key& key, std::string_view bytes) {
      merged.emplace_back(key, bytes);
      return true;
    }));
    EXPECT_TRUE(merged == stable_order(joined)) << count;
  }
}

TEST(external_sorter, stops_when_nobody_wants_more) {
  external_sorter sorter({least_sort_memory, ""});
  for (int i = 0; i < 3; ++i) ASSERT_TRUE(sorter.add({}, "x"));
  int seen = 0;
  EXPECT_FALSE(sorter.finish([&](const sort_key&, std::string_view) { return ++seen < 2; }));
  EXPECT_EQ(seen, 2);
  EXPECT_EQ(sorter.error(), "");
}

}  // namespace
}  // namespace zanvik::testing
