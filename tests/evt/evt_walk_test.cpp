// The scan over a whole log: where it starts, what it accepts, how it continues and where it ends.
#include <gtest/gtest.h>

#include "collected_records.h"
#include "evt/part_walk.h"

namespace zanvik::testing {
namespace {

using numbers = std::vector<std::uint32_t>;

numbers walked(const evt_builder& log) { return collected_log(log.bytes()).numbers(); }

evt_builder three_records() {
  return evt_builder()
      .add({.sid = "S-1-5-18", .strings = {"one", "two"}})
      .add({.event_id = 6006, .data = bytes_of("1234")})
      .add({.strings = {"three"}});
}

TEST(evt_walk, records_come_in_file_order_from_both_sides_of_the_cursor) {
  // The newest records are before the cursor, old ones after it.
  auto wrapped = evt_builder().add({.record_num = 9}).add({.record_num = 10}).cursor();
  wrapped.add({.record_num = 3}).add({.record_num = 4}).add({.record_num = 4});
  EXPECT_EQ(walked(wrapped), (numbers{9, 10, 3, 4, 4}));
  // A cursor without a length is stepped over by 4.
  wrapped.poke_u32(wrapped.record_offset(2) - 40, 0);
  EXPECT_EQ(walked(wrapped), (numbers{9, 10, 3, 4, 4}));
  // One with a wrong length leads past the next record's head.
  wrapped.poke_u32(wrapped.record_offset(2) - 40, 48);
  EXPECT_EQ(walked(wrapped), (numbers{9, 10, 4, 4}));
}

TEST(evt_walk, garbage_is_left_in_steps_of_four) {
  struct row {
    std::size_t garbage;
    numbers expected;
  };
  for (const row& r : {row{4, {1, 2}}, row{56, {1, 2}}, row{5, {1}}, row{6, {1}}}) {
    auto log = evt_builder().add({}).raw(byte_vector(r.garbage, std::byte{0x77})).add({});
    EXPECT_EQ(walked(log), r.expected) << r.garbage;
  }
}

TEST(evt_walk, record_that_leads_out_of_the_file_ends_the_walk) {
  auto log = three_records();
  log.poke_u32(log.record_offset(1), static_cast<std::uint32_t>(log.size() - log.record_offset(1)));
  EXPECT_EQ(walked(log), (numbers{1, 2}));  // up to the end is not out of it
  log.poke_u32(log.record_offset(1),
               static_cast<std::uint32_t>(log.size() - log.record_offset(1) + 1));
  EXPECT_EQ(walked(log), (numbers{1}));
  log.poke_u32(log.record_offset(1), 0xffffffff);
  EXPECT_EQ(walked(log), (numbers{1}));
}

TEST(evt_walk, record_without_a_size_is_taken_and_the_scan_goes_on) {
  auto log = three_records();
  log.poke_u32(log.record_offset(1), 0);
  const collected_log found(log.bytes());
  EXPECT_EQ(found.numbers(), (numbers{1, 2, 3}));
  EXPECT_EQ(found.records.at(1).source, "");
}

TEST(evt_walk, header_size_is_taken_as_it_stands) {
  auto log = three_records();
  log.poke_u32(0, static_cast<std::uint32_t>(log.record_offset(1)));
  EXPECT_EQ(walked(log), (numbers{2, 3}));
  log.poke_u32(0, 0);  // the header is the first record; "major version" is its number
  EXPECT_EQ(walked(log), (numbers{1, 1, 2, 3}));
  log.poke_u32(0, static_cast<std::uint32_t>(log.size()));
  EXPECT_EQ(walked(log), numbers{});
  log.poke_u32(0, 0xfffffffc);
  EXPECT_EQ(walked(log), numbers{});
}

TEST(evt_walk, only_the_signature_makes_a_log) {
  EXPECT_TRUE(collected_log(evt_builder().bytes()).is_log);
  auto log = three_records();
  log.poke_u8(4, 'l');
  EXPECT_FALSE(collected_log(log.bytes()).is_log);
  EXPECT_EQ(walked(log), numbers{});
  for (const std::size_t size : {0, 4, 7}) {
    auto cut = three_records();
    cut.truncate(size);
    EXPECT_FALSE(collected_log(cut.bytes()).is_log) << size;
  }
}

// What a record says about itself must not cost more than the log allows.
TEST(evt_walk, crafted_strings_are_cut_short) {
  evt_builder log;
  const std::string letters(30000, 'a');
  for (int i = 0; i < 10; ++i) log.add({.strings = {letters}, .num_strings = 0xffff});
  const collected_log found(log.bytes());
  ASSERT_EQ(found.records.size(), 10u);
  std::size_t text_bytes = 0;
  for (const auto& record : found.records) {
    for (const auto& string : record.strings) text_bytes += string.size();
  }
  EXPECT_GE(text_bytes, log.size());
  EXPECT_LE(text_bytes, 20 * log.size());
}

// Under the sanitizers, in buffers of exact size: each cut yields the records before it.
TEST(evt_sweep, every_truncation) {
  const auto whole = three_records();
  for (std::size_t size = 0; size <= whole.size(); ++size) {
    std::size_t complete = 0;
    while (complete < 3 &&
           (complete == 2 ? whole.size() : whole.record_offset(complete + 1)) <= size) {
      ++complete;
    }
    EXPECT_EQ(collected_log(std::span(whole.bytes()).first(size)).records.size(), complete) << size;
  }
}

// Numbers of the records, and what their texts hold, from parts of that size.
std::string in_parts(std::span<const std::byte> log, std::size_t part_bytes) {
  class telling_sink : public evt_sink {
   public:
    void on_record(const evt_record& record) override {
      told += std::to_string(record.record_num) + "(";
      for (const evt_text text : record.strings) append_evt_text(told, text);
      told += ")";
    }
    std::string told;
  };
  telling_sink sink;
  evt_part_walk walk(sink, 0);
  for (std::size_t end = 0; end != log.size();) {
    end = std::min(log.size(), end + part_bytes);
    const std::size_t begin = std::min<std::size_t>(walk.position(), end);
    walk.walk(log.subspan(begin, end - begin), begin, end == log.size());
  }
  return sink.told + (walk.lost() != 0 ? " lost " + std::to_string(walk.lost()) : "");
}

TEST(evt_part_walk, finds_the_same_in_parts_of_any_size) {
  evt_builder log;
  for (std::uint32_t n = 1; n <= 40; ++n) {
    log.add({.record_num = n, .strings = {std::string(n * 17, 'a'), "b"}});
  }
  const std::string whole = in_parts(log.bytes(), log.bytes().size());
  EXPECT_EQ(std::count(whole.begin(), whole.end(), '('), 40);
  for (const std::size_t part : {1u, 7u, 64u, 1000u, 9000u}) {
    EXPECT_EQ(in_parts(log.bytes(), part), whole) << part;
  }
}

TEST(evt_part_walk, counts_what_a_cut_record_costs) {
  evt_builder log;
  for (std::uint32_t n = 1; n <= 9; ++n) log.add({.record_num = n});
  byte_vector bytes(log.bytes().begin(), log.bytes().end());
  set_u32(bytes, log.record_offset(4), 0x7000);
  for (const std::size_t part : {7u, 1000u, 1u << 20}) {
    EXPECT_EQ(in_parts(bytes, part), "1()2()3()4() lost 5") << part;
  }
  // Of the last record there are 8 bytes.
  bytes.assign(log.bytes().begin(),
               log.bytes().begin() + static_cast<std::ptrdiff_t>(log.record_offset(8) + 8));
  EXPECT_EQ(in_parts(bytes, 1000), "1()2()3()4()5()6()7()8() lost 1");
}

TEST(evt_part_walk, passes_over_a_record_that_is_too_long) {
  evt_builder log;
  log.add({.record_num = 1}).add({.record_num = 2});
  byte_vector bytes(log.bytes().begin(), log.bytes().end());
  constexpr std::size_t header_bytes = 48;
  constexpr std::uint32_t length = 5 << 20;
  std::memcpy(bytes.data() + header_bytes, &length, sizeof(length));
  EXPECT_EQ(in_parts(bytes, 4096), " lost 2");  // it leads out of the log
  bytes.resize(header_bytes + length);
  bytes.insert(bytes.end(), log.bytes().begin() + header_bytes, log.bytes().end());
  EXPECT_EQ(in_parts(bytes, 1 << 20), "1()2() lost 1");
}

}  // namespace
}  // namespace zanvik::testing
