// Events from bytes that are no log: whole chunks, cut ones, and records alone.
#include "source/carver.h"

#include <gtest/gtest.h>

#include <random>
#include <set>

#include "base/limits.h"
#include "evt_builder.h"
#include "exported_events.h"
#include "source/log_signatures.h"
#include "source/record_runs.h"

namespace zanvik::testing {
namespace {

byte_vector noise(std::size_t size, unsigned seed = 1) {
  std::mt19937 random(seed);
  byte_vector bytes(size);
  for (std::byte& byte : bytes) byte = static_cast<std::byte>(random());
  return bytes;
}

byte_vector joined(const std::vector<byte_vector>& parts) {
  byte_vector all;
  for (const byte_vector& part : parts) append_bytes(all, part);
  return all;
}

byte_vector part(const byte_vector& bytes, std::size_t at, std::size_t size) {
  return {bytes.begin() + std::ptrdiff_t(at), bytes.begin() + std::ptrdiff_t(at + size)};
}

byte_vector chunk_of(const chunk_builder& chunk) { return chunk.build().bytes; }

// Runs the carver over the bytes, `piece` of them at a time.
void carve(const byte_vector& bytes, event_sink& sink, const log_source& source,
           std::size_t piece = 1 << 20) {
  carver work(sink, source, false);
  for (std::size_t at = 0; at < bytes.size();) {
    const auto room = work.room(at);
    const std::size_t size = std::min({piece, room.size(), bytes.size() - at});
    std::copy_n(bytes.begin() + std::ptrdiff_t(at), size, room.begin());
    work.take(size);
    at += size;
  }
  EXPECT_TRUE(work.finish());
}

std::string carved_text(const byte_vector& bytes, std::size_t piece = 1 << 20) {
  writing_sink sink("jsonl");
  carve(bytes, sink, sink.source(), piece);
  return sink.take();
}

// Each line without what tells of its place.
std::multiset<std::string> lines_without_place(const std::string& text) {
  std::multiset<std::string> lines;
  for (std::size_t at = 0; at < text.size();) {
    const std::size_t end = text.find('\n', at);
    std::string line = text.substr(at, end - at);
    for (const auto& [from, to] : {std::pair{"\"offset\":", ","}, {",\"carved\":true", ""}}) {
      const std::size_t begin = line.find(from);
      if (begin == std::string::npos) continue;
      const std::size_t size = std::string_view(from).size();
      line.erase(begin, *to ? line.find(to, begin) + 1 - begin : size);
    }
    lines.insert(line);
    at = end + 1;
  }
  return lines;
}

struct seen_event {
  std::uint64_t number, offset;
  std::uint32_t flags;
  std::string text;  // of the datum Text, or of the first slot's
};

std::vector<seen_event> carved(const byte_vector& bytes, std::size_t piece = 1 << 20) {
  class : public event_sink {
   public:
    void on_event(const event_view& event) override {
      std::string scratch;
      const event_header& head = event.header();
      events.push_back({head.record_number, head.file_offset, head.flags,
                        std::string(event.text(event.shape().find_datum("Text"), scratch))});
    }
    std::vector<seen_event> events;
  } sink;
  carve(bytes, sink, {"a.bin", "", log_kind::evtx}, piece);
  return sink.events;
}

std::vector<std::uint64_t> numbers(const std::vector<seen_event>& events) {
  std::vector<std::uint64_t> out;
  for (const seen_event& event : events) out.push_back(event.number);
  return out;
}

using number_list = std::vector<std::uint64_t>;

TEST(log_signatures, the_wide_search_finds_what_a_plain_one_does) {
  std::mt19937 random(7);
  const std::string_view letters("ElfChnk\0*Le", 11);
  byte_vector bytes;
  for (int i = 0; i < 20000; ++i) append_u8(bytes, letters[random() % letters.size()]);
  for (const auto& [text, size] : {std::pair{"ElfChnk", 8}, {"**\0", 4}, {"LfLe", 4}}) {
    for (int i = 0; i < 60; ++i) std::memcpy(&bytes[random() % 19990], text, std::size_t(size));
  }
  std::memcpy(&bytes[bytes.size() - 8], "ElfChnk", 8);
  std::vector<std::size_t> plain, wide;
  const std::string_view text(reinterpret_cast<const char*>(bytes.data()), bytes.size());
  for (std::size_t at = 0; at + longest_signature <= text.size(); ++at) {
    const auto rest = text.substr(at);
    if (rest.starts_with("LfLe") || rest.starts_with(std::string_view("**\0\0", 4)) ||
        rest.starts_with(std::string_view("ElfChnk\0", 8))) {
      plain.push_back(at);
    }
  }
  for (std::size_t from = 0;;) {
    const signature_hit hit = find_signature(bytes, from);
    if (hit.kind == log_signature::none) break;
    wide.push_back(hit.at);
    from = hit.at + 1;
  }
  EXPECT_EQ(wide, plain);
  EXPECT_GT(wide.size(), 100u);
}

TEST(carver, gives_of_samples_between_noise_what_their_files_give) {
  byte_vector all;
  std::string expected;
  unsigned seed = 0;
  for (const log_builder& log : {security_sample(), system_sample(), sysmon_sample()}) {
    append_bytes(all, noise(512, ++seed));
    append_bytes(all, log.bytes());
    expected += exported(log, "jsonl");
  }
  const auto whole = lines_without_place(expected);
  ASSERT_GT(whole.size(), 50u);
  for (const std::size_t piece : {std::size_t{1} << 20, std::size_t{4093}}) {
    EXPECT_EQ(lines_without_place(carved_text(all, piece)), whole) << piece;
  }
}

TEST(carver, events_have_their_offset_in_the_input) {
  const auto built = chunk_builder({record(7), record(8)}).build();
  const auto events = carved(joined({noise(1001), built.bytes, noise(5)}));
  ASSERT_EQ(numbers(events), (number_list{7, 8}));
  EXPECT_EQ(events[1].offset, 1001 + built.record_offsets[1]);
  EXPECT_EQ(events[1].flags, event_carved);
  EXPECT_EQ(events[1].text, "text of 8");
}

// The rest of a chunk stands far from its beginning, and before it.
TEST(carver, reads_a_chunk_in_two_pieces_with_the_templates_of_the_first) {
  std::vector<record_builder> records;
  for (std::uint64_t i = 1; i <= 40; ++i) records.push_back(record(i));
  const auto built = chunk_builder(records).build();
  const std::size_t border = 4096;
  const byte_vector input = joined({part(built.bytes, border, chunk_bytes - border), noise(70001),
                                    part(built.bytes, 0, border), noise(70000, 2)});
  number_list expected;
  std::size_t split = 0;  // the record that lies over the border
  for (std::size_t i = 0; i < 40; ++i) {
    const std::size_t end = i == 39 ? border + 1 : built.record_offsets[i + 1];
    if (built.record_offsets[i] < border && end > border) split = i + 1;
  }
  ASSERT_GT(split, 5u);
  ASSERT_LT(split, 35u);
  for (std::uint64_t i = split + 1; i <= 40; ++i) expected.push_back(i);
  for (std::uint64_t i = 1; i < split; ++i) expected.push_back(i);
  for (const std::size_t piece : {std::size_t{1} << 20, std::size_t{4093}}) {
    const auto events = carved(input, piece);
    EXPECT_EQ(numbers(events), expected);
    for (const seen_event& event : events) {
      EXPECT_EQ(event.text, "text of " + std::to_string(event.number));
      EXPECT_EQ(event.flags, event_carved);
    }
  }
}

// A chunk without its header: the first record brings the template, and with it the place.
TEST(carver, reads_records_behind_a_lost_header) {
  const auto built = chunk_builder({record(3), record(4), record(5)}).build();
  const auto events = carved(joined({noise(333), part(built.bytes, 512, 6000)}));
  ASSERT_EQ(numbers(events), (number_list{3, 4, 5}));
  for (const seen_event& event : events) {
    EXPECT_EQ(event.text, "text of " + std::to_string(event.number));
    EXPECT_EQ(event.flags, event_carved);
  }
}

TEST(carver, invents_nothing_for_a_record_without_its_template) {
  const auto built = chunk_builder({record(3), record(4), record(5)}).build();
  const std::size_t at = built.record_offsets[1];
  const byte_vector alone = part(built.bytes, at, built.record_offsets[2] - at);
  const auto events = carved(joined({noise(100), alone, noise(100)}));
  ASSERT_EQ(numbers(events), number_list{4});
  EXPECT_EQ(events[0].offset, 100u);
  EXPECT_EQ(events[0].flags, event_carved | event_no_template);
  EXPECT_EQ(events[0].text, "") << "no name";
  EXPECT_NE(carved_text(alone).find("text of 4"), std::string::npos) << "the value is there";

  // Two templates that its id may mean are as good as none; one of another form is not meant.
  event other{.data = {{"Other", slot::utf16("x")}}};
  event wider{.data = {{"Other", slot::utf16("x")}, {"More", slot::utf16("y")}}};
  const auto with = [&](event content) {
    template_definition mine = payload_template({.data = {{"Text", slot::utf16("x")}}});
    template_definition forged = payload_template(content);
    forged.guid = mine.guid.substr(0, 9) + "ffff" + mine.guid.substr(13);
    return chunk_of(
        {template_record(9, default_filetime(9), forged,
                         std::vector<slot_value>(content.data.size(), slot::utf16("z")))});
  };
  const byte_vector own = built.bytes;
  const auto text_of_4 = [&](const std::vector<byte_vector>& parts) {
    for (const seen_event& event : carved(joined(parts))) {
      if (event.number == 4 && event.offset == 0) return event.text;
    }
    return std::string("none");
  };
  EXPECT_EQ(text_of_4({alone, own}), "text of 4");
  EXPECT_EQ(text_of_4({alone, own, with(other)}), "");
  EXPECT_EQ(text_of_4({alone, own, with(wider)}), "text of 4");
}

TEST(carver, passes_over_what_only_looks_like_a_record) {
  const auto built = chunk_builder({record(3)}).build();
  const byte_vector good = part(built.bytes, 512, 4096);
  const auto found_with = [&](auto damage) {
    byte_vector bytes = good;
    damage(bytes);
    return carved(bytes).size();
  };
  const std::uint32_t size = get_u32(good, 4);
  EXPECT_EQ(found_with([](byte_vector&) {}), 1u);
  EXPECT_EQ(found_with([&](byte_vector& b) { b[size - 4] ^= std::byte{1}; }), 0u) << "sizes differ";
  EXPECT_EQ(found_with([](byte_vector& b) { b[23] = std::byte{0xff}; }), 0u) << "no such time";
  EXPECT_EQ(found_with([](byte_vector& b) { b[24] = std::byte{0}; }), 0u) << "no binary XML";
}

TEST(carver, finds_legacy_records) {
  const evt_builder log =
      evt_builder().add({.record_num = 5, .strings = {"a", "b"}}).add({}).cursor();
  byte_vector broken = evt_record_bytes({.record_num = 99});
  broken.back() ^= std::byte{1};
  const byte_vector input = joined({noise(77), broken, log.bytes(), noise(9)});
  for (const std::size_t piece : {std::size_t{1} << 20, std::size_t{7}}) {
    const auto events = carved(input, piece);
    ASSERT_EQ(numbers(events), (number_list{5, 6}));
    EXPECT_EQ(events[0].offset, 77 + broken.size() + log.record_offset(0));
    EXPECT_EQ(events[0].flags, event_carved);
  }
}

// What does not fit into memory comes back from a file, in order and as often as asked.
TEST(run_store, gives_back_what_it_took) {
  run_store store;
  std::vector<std::pair<std::uint64_t, byte_vector>> kept;
  for (unsigned i = 0; i < 12; ++i) {
    const std::uint32_t size = i % 3 == 0 ? 100 : limits::carved_bytes_in_memory / 4 + i;
    kept.emplace_back(i * 1000, noise(size, i));
    ASSERT_TRUE(store.add({i * 1000, i, size}, kept.back().second));
  }
  for (int round = 0; round < 2; ++round) {
    std::size_t next = 0;
    EXPECT_TRUE(store.for_each([&](const record_run& run, std::span<const std::byte> bytes) {
      ASSERT_LT(next, kept.size());
      EXPECT_EQ(run.offset, kept[next].first);
      EXPECT_EQ(run.place, next);
      EXPECT_TRUE(std::ranges::equal(bytes, kept[next].second)) << next;
      ++next;
    }));
    EXPECT_EQ(next, kept.size());
  }
}

// Legacy records that lie over one another, each as long as may be: what comes out is in proportion
// to the input.
TEST(carver, overlapping_records_cost_no_more_than_a_multiple) {
  constexpr std::size_t records = 6000, step = 64;
  const std::uint32_t size = 256 << 10;
  byte_vector input(records * step + size);
  const byte_vector head = evt_record_bytes({.strings = {}});
  for (std::size_t i = 0; i < records; ++i) {
    const std::size_t at = i * step;
    std::copy_n(head.begin(), 56, input.begin() + std::ptrdiff_t(at));
    std::memcpy(&input[at], &size, 4);
    std::memcpy(&input[at + size - 4], &size, 4);
  }
  const std::size_t found = carved(input).size();
  EXPECT_GE(found, 5u);
  EXPECT_LE(found, 64u);
}

}  // namespace
}  // namespace zanvik::testing
