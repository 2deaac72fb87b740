// How results are cut into items, and which times their items show, in each form.
#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

#include "merge/merge.h"
#include "scratch_dir.h"

namespace zanvik::testing {
namespace {

const result_form& form(std::string_view name) {
  for (const result_form& known : result_forms()) {
    if (known.name == name) return known;
  }
  throw std::runtime_error("no such form");
}

std::optional<std::uint64_t> time_of(std::string_view form_name, std::string_view item) {
  std::uint64_t time = 0;
  if (!form(form_name).shown_time(item, time)) return std::nullopt;
  return time;
}

std::string tree(const std::string& event, const std::string& written) {
  return "{\"Event\":" + event + ",\"zanvik\":{\"log\":\"a\",\"written\":\"" + written + "\"}}\n";
}
std::string created(const std::string& time) {
  return R"({"System":{"TimeCreated":{"#attributes":{"SystemTime":")" + time + "\"}}}}";
}

TEST(result_form, times_that_items_show) {
  // 2024-03-09T10:20:30Z is 13,354,453,230 seconds after 1601.
  constexpr std::uint64_t ticks = 133'544'532'301'234'567;
  const std::string iso = "2024-03-09T10:20:30.1234567Z";
  const std::string other = "2001-01-01T00:00:00.0000000Z";
  struct row {
    std::string_view form, item;
    std::optional<std::uint64_t> time;
  };
  const std::string both = tree(created(iso), other);
  const std::string header_time = tree("null", iso);
  const std::string null_time =
      tree(R"({"System":{"TimeCreated":{"#attributes":{"SystemTime":null}}}})", iso);
  // What only looks like the member: in a text, in another element, nested deeper.
  const std::string fakes =
      tree(R"({"#attributes":{"x":"\"System\":{\"TimeCreated\":"},"EventData":{"System":)" +
               created(other) + R"(,"a":["}",{"]":1}]},"System":{"Level":4,"TimeCreated":)" +
               R"({"#attributes":{"a\\":"\\","SystemTime":")" + iso + "\"}}}}",
           other);
  const std::string late = tree(created("3000000000000000000"), other);
  for (const row& given : {
           row{"jsonl", both, ticks},
           row{"jsonl", header_time, ticks},
           row{"jsonl", null_time, ticks},
           row{"jsonl", fakes, ticks},
           row{"jsonl", late, 3'000'000'000'000'000'000},
           row{"jsonl", "{\"Event\":{\"System\":{\"", std::nullopt},
           row{"jsonl", "{\"Event\":{\"a\":\"\\", std::nullopt},
           row{"elastic", "{\"@timestamp\":\"2024-03-09T10:20:30.1234567Z\",", ticks},
           row{"elastic", "{\"@timestamp\":\"2024-03-09T10:20:30.1234567\",", std::nullopt},
           row{"csv", "2024-03-09T10:20:30.1234567Z,\"a\"", ticks},
           row{"csv", "1601-01-01T00:00:00.0000001Z,", 1},
           row{"csv", "2000-02-29T00:00:00.0000000Z,", 125'962'560'000'000'000},
           row{"csv", "2024-13-09T10:20:30.1234567Z,", std::nullopt},
           row{"csv", ",", std::nullopt},
           row{"l2t", "2024-03-09, 10:20:30.123,UTC", ticks / 10'000},
           row{"l2t", "2024-03-09 10:20:30.123,UTC", std::nullopt},
           row{"bodyfile", "0|x|0||0|0|0|5|5|5|5\n", 0x8000000000000005},
           row{"bodyfile", "0|x|0||0|0|0|-1|-1|-1|-1\n", 0x7fffffffffffffff},
           row{"bodyfile", "nothing", std::nullopt},
           row{"timesketch", "{\"message\":\",\\\"timestamp\\\":7\",\"timestamp\":9,\"x\":1}",
               0x8000000000000009},
           row{"timesketch", "{\"message\":1}", std::nullopt},
       }) {
    EXPECT_EQ(time_of(given.form, given.item), given.time) << given.item;
  }
}

TEST(result_form, items_end_where_their_event_does) {
  struct row {
    std::string_view form, text;
    std::vector<std::size_t> sizes;  // of the items, in turn
  };
  for (const row& given : {
           row{"jsonl", "{}\n{\"a\"}\n", {3, 6}},
           row{"csv", "a,\"x\ny\"\"\n\",\nb,\n", {12, 3}},
           row{"bodyfile", "0|a\nb|0||0|0|0|1|1|1|1\n0|||||||||||\n", {23, 13}},
           row{"l2t",
               "2024-03-09, 10:20:30.123,x\nno time\n2024-03-09, 10:20:30.124,y\n",
               {35, 27}},
       }) {
    std::string_view rest = given.text;
    for (const std::size_t size : given.sizes) {
      // Without what comes behind it, an item is only sure to end if nothing comes.
      EXPECT_EQ(form(given.form).item_end(rest.substr(0, size - 1), false), rest.npos);
      EXPECT_EQ(form(given.form).item_end(rest, true), size) << rest;
      rest.remove_prefix(std::min(size, rest.size()));
    }
    EXPECT_EQ(rest, "");
  }
}

TEST(result_input, reads_through_a_small_buffer_and_says_what_is_wrong) {
  const scratch_dir scratch;
  const std::string item = "0|" + std::string(300, 'x') + "|0||0|0|0|7|7|7|7\n";
  const auto read = [&](const std::string& text, std::string& error, std::uint64_t& late) {
    result_input input;
    EXPECT_TRUE(input.open(scratch.write("in", text), 64));
    input.set_form(form("bodyfile"));
    std::string all;
    while (input.next()) all += input.bytes();
    error = input.error();
    late = input.out_of_order();
    return all;
  };
  std::string error;
  std::uint64_t late = 0;
  EXPECT_EQ(read(item + item, error, late), item + item);
  EXPECT_EQ(error, "");
  EXPECT_EQ(late, 0u);
  std::string early = item;
  early.replace(early.size() - 2, 1, "6");
  EXPECT_EQ(read(item + early + item, error, late), item + early + item) << "it keeps its place";
  EXPECT_EQ(late, 2u);
  EXPECT_EQ(read(item + item.substr(0, 200), error, late), item);
  EXPECT_NE(error.find("in the middle"), std::string::npos);
  result_input none;
  EXPECT_FALSE(none.open(scratch.path("none"), 64));
}

}  // namespace
}  // namespace zanvik::testing
