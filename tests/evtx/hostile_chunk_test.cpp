// Chunks that were crafted to be slow or large: each ends within the work budget of the chunk.
#include <gtest/gtest.h>

#include "evtx/first_record.h"
#include "read_back.h"

namespace zanvik::testing {
namespace {

constexpr std::uint64_t some_time = 133000000000000000;

std::vector<std::uint64_t> numbers_of(const chunk_builder& chunk) {
  return record_numbers(walk(chunk.build().bytes));
}

// Fifty elements of 9 bytes whose one name, elsewhere in the chunk, has 15,000 units.
record_builder greedy_names(std::uint64_t number) {
  return plain_record(number, some_time, [](bxml_builder& b) {
    b.fragment_header();
    for (int i = 0; i < 50; ++i) b.open(std::string(15000, 'n'));
    b.end_of_stream();
  });
}

record_builder honest_plain(std::uint64_t number) {
  return plain_record(number, some_time, [](bxml_builder& b) {
    b.fragment_header().open("Channel").close_start().value("X").end_element().end_of_stream();
  });
}

// A stream whose budget is used up ends where it is, before its fragment header is read.
TEST(hostile_chunk, a_used_up_budget_ends_the_streams_behind_it) {
  EXPECT_EQ(numbers_of({greedy_names(1), honest_plain(2), honest_plain(3)}),
            std::vector<std::uint64_t>{});
  EXPECT_EQ(numbers_of({honest_plain(2), honest_plain(3)}), (std::vector<std::uint64_t>{2, 3}));
  // The next chunk has its own budget.
  const auto log = log_builder().chunk({greedy_names(1)}).chunk({honest_plain(2)});
  EXPECT_EQ(record_numbers(walk(log)), std::vector<std::uint64_t>{2});
}

// Each attribute's field repeats its element's name: 2,000 fields of 15,000 characters.
TEST(hostile_chunk, names_that_are_repeated_are_paid_for) {
  const auto repeated = plain_record(1, some_time, [](bxml_builder& b) {
    b.fragment_header().open_with_attributes(std::string(15000, 'n'));
    for (int i = 0; i < 2000; ++i) b.attribute("a").value("v");
    b.close_empty().end_of_stream();
  });
  EXPECT_EQ(numbers_of({repeated, honest_plain(2)}), std::vector<std::uint64_t>{});
}

// The same where templates are decoded: when the budget is used up, the rest gets no names and
// ends.
TEST(hostile_chunk, a_used_up_budget_ends_the_bodies_behind_it) {
  const template_definition greedy{"11111111-2222-3333-4455-667788990011", [](bxml_builder& b) {
                                     b.fragment_header();
                                     for (int i = 0; i < 300; ++i) b.open(std::string(15000, 'n'));
                                     b.end_of_stream();
                                   }};
  const template_definition honest{"21111111-2222-3333-4455-667788990011", [](bxml_builder& b) {
                                     b.fragment_header().open("Level").close_start();
                                     b.optional_sub(0, 4).end_element().end_of_stream();
                                   }};
  EXPECT_EQ(numbers_of({template_record(1, some_time, greedy, {slot::uint8(2)}),
                        template_record(2, some_time, honest, {slot::uint8(3)})}),
            (std::vector<std::uint64_t>{1, 2}));
}

// A body that uses one value of 38,000 bytes again and again: all of it in hexadecimal would be 680
// MB.
TEST(hostile_chunk, the_text_of_a_first_record_stays_in_proportion) {
  const template_definition definition{"11111111-2222-3333-4455-667788990011", [](bxml_builder& b) {
                                         b.fragment_header().open("UserData").close_start();
                                         for (int i = 0; i < 6000; ++i) b.normal_sub(0, 14);
                                         b.end_element().end_of_stream();
                                       }};
  const chunk_builder chunk({template_record(1, some_time, definition,
                                             {slot::binary(byte_vector(38000, std::byte{1}))})});
  const auto text = first_record_text(chunk.build().bytes);
  ASSERT_TRUE(text);
  EXPECT_GT(text->size(), 38000u);
  EXPECT_LT(text->size(), 16u << 20);
}

}  // namespace
}  // namespace zanvik::testing
