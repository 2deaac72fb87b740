// The walk over blocks, chunks and record headers.
#include <gtest/gtest.h>

#include <optional>

#include "read_back.h"

namespace zanvik::testing {
namespace {

using numbers = std::vector<std::uint64_t>;

numbers walked(const file_bytes& log) { return record_numbers(walk(log)); }

log_builder two_chunks() { return log_builder().chunk({record(7), record(8)}).chunk({record(9)}); }

TEST(chunk_walk, bad_record_ends_the_chunk_and_spares_the_next) {
  auto log = two_chunks();
  const std::size_t second = log.record_offset(0, 1);
  const std::tuple<const char*, std::size_t, std::uint32_t, numbers> rows[] = {
      {"a size of 9 is one too small", 4, 9, {7, 9}},
      {"10 is not", 4, 10, {7, 8, 9}},
      {"65,536 is not too large", 4, 65536, {7, 8, 9}},
      {"65,537 is", 4, 65537, {7, 9}},
      {"all four bytes of the signature count", 0, 0x01002a2a, {7, 9}},
  };
  for (const auto& [reason, field, value, expected] : rows) {
    auto damaged = log;
    damaged.poke_u32(second + field, value);
    EXPECT_EQ(walked(damaged), expected) << reason;
  }
}

TEST(chunk_walk, signatures_decide_what_is_read) {
  const std::tuple<const char*, std::optional<std::size_t>, bool, walk_result, numbers> rows[] = {
      {"all in order", std::nullopt, false, walk_result::walked, {7, 8, 9}},
      {"a chunk behind a file header is skipped", 0, false, walk_result::walked, {9}},
      {"a later chunk is skipped", 1, false, walk_result::walked, {7, 8}},
      {"neither file nor chunk", std::nullopt, true, walk_result::not_evtx, {}},
  };
  for (const auto& [reason, damaged_chunk, damaged_file, result, expected] : rows) {
    auto log = two_chunks();
    if (damaged_chunk) log.poke_u8(log.chunk_offset(*damaged_chunk) + 7, 1);
    if (damaged_file) log.poke_u8(3, 'f');
    const time_formats format;
    record_reader reader(format);
    keeping_sink sink;
    EXPECT_EQ(walk_evtx_block(log.span(), 0, reader, sink, {}), result) << reason;
    EXPECT_EQ(record_numbers(sink.records), expected) << reason;
  }
  // In a block that starts with its first chunk, the loss of that chunk is the loss of all.
  auto log = two_chunks();
  log.poke_u8(log.chunk_offset(0), 'e');
  EXPECT_EQ(record_numbers(walk(log.span().subspan(file_header_bytes))), numbers{});
}

TEST(chunk_walk, only_full_chunks_are_read) {
  const auto log = two_chunks();
  const std::span<const std::byte> bytes = log.bytes();
  const std::tuple<const char*, std::size_t, std::size_t, numbers> rows[] = {
      {"header alone", 0, 4096, {}},
      {"one byte short of a chunk", 0, 4096 + 65535, {}},
      {"one chunk and all but a byte of the next", 0, 4096 + 2 * 65536 - 1, {7, 8}},
      {"bare chunk", 4096, 65536, {7, 8}},
      {"bare chunks", 4096, 2 * 65536, {7, 8, 9}},
      {"nothing", 0, 0, {}},
      {"less than a signature", 0, 7, {}},
  };
  for (const auto& [reason, from, size, expected] : rows) {
    EXPECT_EQ(record_numbers(walk(bytes.subspan(from, size))), expected) << reason;
  }
}

TEST(chunk_walk, the_declared_range_counts_the_records) {
  const auto chunk_of = [](std::uint64_t first, std::uint64_t last) {
    return log_builder().chunk(
        chunk_builder({record(7), record(8), record(9)}).declare(first, last));
  };
  const std::tuple<const char*, std::uint64_t, std::uint64_t, numbers> rows[] = {
      {"fewer than there are", 7, 8, {7, 8}},
      {"other numbers: only their count matters", 100, 101, {7, 8}},
      {"more than there are", 7, 70, {7, 8, 9}},
      {"the wrong way round", 9, 7, {}},
      {"up to the largest number", ~std::uint64_t{0} - 1, ~std::uint64_t{0}, {7, 8}},
  };
  for (const auto& [reason, first, last_number, expected] : rows) {
    auto log = chunk_of(first, last_number);
    log.poke_u64(log.chunk_offset(0) + 16, 9);  // the last record, apart from the range
    EXPECT_EQ(walked(log), expected) << reason;
  }
  auto log = chunk_of(7, 9);
  log.poke_u64(log.chunk_offset(0) + 16, ~std::uint64_t{0});
  EXPECT_EQ(walked(log), numbers{}) << "a last record of all ones: the chunk has none";
}

TEST(chunk_walk, a_size_may_lead_into_the_next_chunk) {
  auto log = two_chunks();
  const std::size_t second = log.record_offset(0, 1);
  const auto far = static_cast<std::uint32_t>(log.record_offset(1, 0) - second);
  log.poke_u32(second + 4, far);
  log.poke_u64(log.chunk_offset(0) + 32, 9);
  // The record there is reached twice: from the first chunk, where its values are out of reach, and
  // in its own chunk.
  const auto records = walk(log);
  ASSERT_EQ(record_numbers(records), (numbers{7, 8, 9, 9}));
  EXPECT_TRUE(records[2].slots.empty());
  EXPECT_EQ(records[2].event_id, 0u);
  EXPECT_EQ(records[3].event_id, 100u);
  log.poke_u64(log.chunk_offset(0) + 32, 8);
  EXPECT_EQ(walked(log), (numbers{7, 8, 9})) << "the counter ends the walk before";
}

TEST(chunk_walk, checksums_and_flags_do_not_matter) {
  auto log = two_chunks();
  const auto before = walk(log);
  log.poke_u32(120, 3);
  log.poke_u32(124, 1);
  for (const std::size_t chunk : {0u, 1u}) {
    for (const std::size_t field : {40u, 44u, 48u, 52u, 120u, 124u}) {
      log.poke_u32(log.chunk_offset(chunk) + field, 0x5a5a5a5a);
    }
  }
  const auto after = walk(log);
  ASSERT_EQ(after.size(), before.size());
  for (std::size_t i = 0; i < after.size(); ++i) EXPECT_EQ(after[i].all, before[i].all);
}

}  // namespace
}  // namespace zanvik::testing
