// Script blocks from parts: in any order, twice, with gaps, and too long.
#include "report/script_blocks.h"

#include <gtest/gtest.h>

#include "report/report_limits.h"

namespace zanvik::testing {
namespace {

script_part part(std::uint64_t number, std::uint64_t total, std::string_view text,
                 std::string_view id = "a", std::string_view host = "WS01") {
  script_part made;
  made.host = host;
  made.block_id = id;
  made.number = number;
  made.total = total;
  made.text = text;
  return made;
}

script_block joined(std::initializer_list<script_part> parts) {
  script_blocks blocks;
  std::uint64_t time = 100;
  for (const script_part& one : parts) blocks.add(one, {--time, 0, 0, 0});
  EXPECT_EQ(blocks.blocks().size(), 1U);
  return blocks.blocks().front();
}

TEST(script_blocks, parts_in_any_order_and_twice) {
  const script_block block =
      joined({part(3, 3, "c"), part(1, 3, "a"), part(3, 3, "x"), part(2, 3, "b")});
  EXPECT_EQ(block.joined(), "abc");
  EXPECT_EQ(block.parts_text(), "3");
  EXPECT_EQ(block.place.time, 96U);  // of the earliest
}

TEST(script_blocks, missing_parts_are_named_where_they_are_missing) {
  const script_block block = joined({part(2, 7, "b"), part(6, 7, "f"), part(3, 7, "c")});
  EXPECT_EQ(block.joined(), "\n[part 1 is missing]\nbc\n[parts 4 to 5 are missing]\nf");
  EXPECT_EQ(block.parts_text(), "3 of 7; missing: 1, 4 to 5, 7");
}

TEST(script_blocks, numbers_that_make_no_sense) {
  const script_block beyond = joined({part(9, 2, "x")});
  EXPECT_EQ(beyond.parts_text(), "1 of 9; missing: 1 to 8");
  const script_block huge = joined({part(UINT64_MAX, UINT64_MAX, "x"), part(1, 1, "y")});
  EXPECT_NE(huge.joined().find('y'), std::string::npos);
  EXPECT_EQ(huge.numbers.size(), 2U);
}

TEST(script_blocks, blocks_of_other_computers_are_others) {
  script_blocks blocks;
  blocks.add(part(1, 2, "a", "id", "WS01"), {1, 0, 0, 0});
  blocks.add(part(2, 2, "b", "id", "WS02"), {1, 0, 0, 0});
  ASSERT_EQ(blocks.blocks().size(), 2U);
  EXPECT_EQ(blocks.blocks()[1].parts_text(), "1 of 2; missing: 1");
}

TEST(script_blocks, of_a_long_block_the_beginning_is_kept) {
  const std::string large(100'000, 'x');
  script_blocks blocks;
  for (std::uint64_t number = 20; number >= 1; --number) {
    blocks.add(part(number, 20, std::to_string(number) + large), {1, 0, 0, 0});
  }
  const std::string text = blocks.blocks().front().joined();
  EXPECT_TRUE(text.starts_with("1x"));
  EXPECT_TRUE(text.ends_with("\n[the rest is left out]"));
  EXPECT_GE(text.size(), report_limits::script_bytes);
  EXPECT_LE(text.size(), report_limits::script_bytes + large.size() + 100);
  EXPECT_EQ(blocks.blocks().front().parts_text(), "20");
}

TEST(script_blocks, all_blocks_together_keep_so_much_text) {
  const std::string large(200'000, 'x');
  script_blocks blocks;
  for (int i = 0; i < 200; ++i) blocks.add(part(1, 1, large, std::to_string(i)), {1, 0, 0, 0});
  std::size_t bytes = 0;
  for (const script_block& block : blocks.blocks()) bytes += block.joined().size();
  EXPECT_LE(bytes, report_limits::all_script_bytes + large.size() + 200 * 40);
  EXPECT_EQ(blocks.blocks().size(), 200U);
}

}  // namespace
}  // namespace zanvik::testing
