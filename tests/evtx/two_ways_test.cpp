// The quick path compared with the plain one, record by record, over sound and damaged logs; and
// the walk over every truncation and every changed byte of a small log.
#include <gtest/gtest.h>

#include <filesystem>
#include <optional>
#include <random>

#include "read_back.h"
#include "samples_builder.h"
#include "scratch_dir.h"

namespace zanvik::testing {
namespace {

// The number of records, or nothing, after printing the first record that differs, if the two paths
// do not agree.
std::optional<std::size_t> agreed(std::span<const std::byte> bytes, const std::string& what) {
  const auto quick = walk(bytes, true);
  const auto plain = walk(bytes, false);
  for (std::size_t i = 0; i < std::min(quick.size(), plain.size()); ++i) {
    if (quick[i].all == plain[i].all) continue;
    ADD_FAILURE() << what << "\nquick: " << quick[i].all << "\nplain: " << plain[i].all;
    return std::nullopt;
  }
  EXPECT_EQ(quick.size(), plain.size()) << what;
  return quick.size() == plain.size() ? std::optional(quick.size()) : std::nullopt;
}

byte_vector file_in_bytes(const std::filesystem::path& path) {
  return bytes_of(std::string_view(file_text(path.string())));
}

std::vector<std::filesystem::path> logs_in(const std::filesystem::path& folder) {
  std::vector<std::filesystem::path> logs;
  for (const auto& entry : std::filesystem::recursive_directory_iterator(folder)) {
    if (entry.path().extension() == ".evtx") logs.push_back(entry.path());
  }
  std::sort(logs.begin(), logs.end());
  return logs;
}

// A chunk of typical events: named, unnamed and user data, both nested heads, values of many types,
// a plain record.
log_builder mixed_log() {
  const event named{.data = {{"Text", slot::utf16("a\nb")}, {"Bytes", slot::binary({})}}};
  event classic = named;
  classic.classic = true;
  classic.form = payload_form::unnamed_event_data;
  event user = named;
  user.form = payload_form::user_data;
  user.nested_head = instance_head::bare;
  return log_builder().chunk({record(1, named), record(2, classic), record(3, user), record(4),
                              record(5, named), record(6, user), record(7, classic),
                              plain_record(8, default_filetime(8), [](bxml_builder& x) {
                                x.fragment_header().open("Event").close_start();
                                x.text_element("EventID", "5").end_element().end_of_stream();
                              })});
}

// The smallest chunk with a definition in a record, a nested one, and a record that refers to both.
log_builder small_log() {
  event user{.form = payload_form::user_data, .data = {{"A", slot::utf16("a")}}};
  user.nested_head = instance_head::bare;
  return log_builder().chunk({record(1, user), record(2, user)});
}

// The part of a one-chunk log that is not free space.
std::size_t used_end(const log_builder& log) {
  return log.chunk_offset(0) + get_u32(log.bytes(), log.chunk_offset(0) + 48);
}

TEST(two_ways, give_one_answer_over_sound_logs) {
  EXPECT_EQ(walk(mixed_log()).size(), 8u);
  EXPECT_TRUE(agreed(mixed_log().bytes(), "mixed"));
  EXPECT_TRUE(agreed(security_sample().bytes(), "security"));
  EXPECT_TRUE(agreed(system_sample().bytes(), "system"));
  EXPECT_TRUE(agreed(odd_sample().bytes(), "odd"));
}

TEST(two_ways, give_one_answer_over_logs_with_every_7th_byte_changed) {
  const log_builder log = mixed_log();
  for (std::size_t at = file_header_bytes; at < used_end(log); at += 7) {
    byte_vector damaged = log.bytes();
    damaged[at] ^= std::byte{static_cast<unsigned char>(1 + at % 255)};
    if (!agreed(damaged, "byte " + std::to_string(at))) break;
  }
}

TEST(two_ways, give_one_answer_over_logs_with_random_damage) {
  std::mt19937 random(20261122);
  const log_builder logs[] = {mixed_log(), odd_sample()};
  for (int round = 0; round < 200; ++round) {
    const log_builder& log = logs[round % 2];
    byte_vector damaged = log.bytes();
    const std::size_t end = used_end(log);
    for (unsigned i = 0; i < 1 + random() % 40; ++i) {
      const std::size_t at = file_header_bytes + random() % (end - file_header_bytes);
      // Small numbers, high bytes and bytes from elsewhere do more damage than noise.
      const unsigned kind = random() % 4;
      damaged[at] = kind == 0   ? std::byte(random() % 4)
                    : kind == 1 ? std::byte{0xff}
                    : kind == 2 ? damaged[file_header_bytes + random() % (end - file_header_bytes)]
                                : std::byte(random() & 0xff);
    }
    if (!agreed(damaged, "round " + std::to_string(round))) break;
  }
}

// The offsets of the names that follow their own offsets in a chunk's templates.
std::vector<std::size_t> name_offsets_of(const log_builder& log, std::size_t chunk,
                                         std::size_t end) {
  const std::size_t begin = log.chunk_offset(chunk);
  std::vector<std::size_t> places;
  for (std::size_t at = log.record_offset(chunk, 0); at + 4 < end; ++at) {
    if (get_u32(log.bytes(), at) == at + 4 - begin) places.push_back(at);
  }
  return places;
}

// Bodies of a later chunk count as those of an earlier one only if they are equal: with each byte
// changed, and with each name's offset changed to another name.
TEST(two_ways, give_one_answer_over_damage_behind_a_sound_chunk) {
  event user{.form = payload_form::user_data, .data = {{"A", slot::utf16("a")}}};
  user.nested_head = instance_head::bare;
  const log_builder log =
      log_builder().chunk({record(1, user), record(2, user)}).chunk({record(3, user)});
  const std::size_t begin = log.chunk_offset(1);
  const std::size_t end = begin + get_u32(log.bytes(), begin + 48);
  for (std::size_t at = begin + 512; at < end; at += 2) {
    byte_vector damaged = log.bytes();
    damaged[at] ^= std::byte{static_cast<unsigned char>(1 + at % 7)};
    ASSERT_TRUE(agreed(damaged, "byte " + std::to_string(at)));
  }
  const auto places = name_offsets_of(log, 1, end);
  ASSERT_GT(places.size(), 20u);
  for (std::size_t i = 0; i < places.size(); ++i) {
    log_builder led = log;
    led.poke_u32(places[i], get_u32(log.bytes(), places[(i + 5) % places.size()]));
    ASSERT_TRUE(agreed(led.bytes(), "name " + std::to_string(i)));
  }
}

TEST(two_ways, give_one_answer_over_real_logs) {
  const std::filesystem::path folder = ZANVIK_SOURCE_DIR "/../shared/logs";
  if (!std::filesystem::exists(folder)) {
    GTEST_SKIP() << "the folder of real logs is not there, so nothing was compared";
  }
  std::size_t records = 0;
  for (const auto& path : logs_in(folder)) {
    const byte_vector bytes = file_in_bytes(path);
    // In blocks, as a run reads them.
    for (std::size_t at = file_header_bytes; at < bytes.size(); at += evtx_layout::block_bytes) {
      const auto block = std::span(bytes).subspan(
          at, std::min<std::size_t>(evtx_layout::block_bytes, bytes.size() - at));
      const auto count = agreed(block, path.filename().string() + " " + std::to_string(at));
      ASSERT_TRUE(count);
      records += *count;
    }
  }
  EXPECT_GT(records, 10000u);
}

TEST(sweep, every_truncation_of_a_log) {
  const log_builder log = mixed_log();
  const std::span<const std::byte> bytes = log.bytes();
  for (std::size_t size = 0; size < bytes.size(); size += size < 4200 ? 1 : 61) {
    EXPECT_TRUE(walk(bytes.first(size)).empty()) << size;
  }
  EXPECT_EQ(walk(bytes).size(), 8u);
}

// A bare chunk, so that its last byte is the buffer's last.
TEST(sweep, every_byte_changed) {
  const log_builder log = small_log();
  const std::size_t used = used_end(log) - file_header_bytes;
  exact_buffer chunk(std::span(log.bytes()).subspan(file_header_bytes));
  const time_formats format;
  std::size_t seen = 0;
  for (std::size_t at = 0; at < used; ++at) {
    std::byte& byte = chunk.span()[at];
    const std::byte before = byte;
    for (const std::byte value : {std::byte{0}, std::byte{0xff}, before ^ std::byte{0x80}}) {
      byte = value;
      record_reader reader(format, at % 2 == 0);
      keeping_sink sink;
      walk_evtx_block(chunk.span(), 0, reader, sink, {});
      EXPECT_LE(sink.records.size(), 2u) << at;
      seen += sink.records.size();
    }
    byte = before;
  }
  EXPECT_GT(seen, used * 3) << "most records survive a changed byte";
}

}  // namespace
}  // namespace zanvik::testing
