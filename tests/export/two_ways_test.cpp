// The forms compared with the plain way, which makes a separate tree of each record: over the
// samples, over damaged copies of them, and over the real logs if they are beside the source
// folder.
#include <gtest/gtest.h>

#include <fstream>
#include <iterator>
#include <random>

#include "exported_events.h"

namespace zanvik::testing {
namespace {

std::string without_frame(const std::string& xml) {
  const std::string head = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<Events>\n";
  const std::string tail = "</Events>\n";
  return xml.substr(head.size(), xml.size() - head.size() - tail.size());
}

// Where the texts differ, for the message.
std::string difference(const std::string& fast, const std::string& plain) {
  std::size_t at = 0;
  while (at < fast.size() && at < plain.size() && fast[at] == plain[at]) ++at;
  const std::size_t from = at < 100 ? 0 : at - 100;
  return "forms: " + fast.substr(std::min(from, fast.size()), 200) +
         "\nplain: " + plain.substr(std::min(from, plain.size()), 200);
}

struct both_ways {
  writing_sink json{"jsonl"}, xml{"xml"};
  evtx_event_reader json_reader{json}, xml_reader{xml};

  both_ways() {
    json_reader.set_source(json.source());
    xml_reader.set_source(xml.source());
  }
};

// Returns the number of events, which both ways write alike.
std::size_t agree(std::span<const std::byte> block, bool slack, const std::string& what) {
  own_bytes bytes(block);
  walk_settings settings;
  settings.inc_slack = slack;
  plain_event_reader plain("a.evtx");
  walk_evtx_block(bytes.span(), 0, plain, settings);
  own_bytes again(block);
  both_ways fast;
  walk_evtx_block(again.span(), 0, fast.json_reader, settings);
  own_bytes once_more(block);
  walk_evtx_block(once_more.span(), 0, fast.xml_reader, settings);
  const std::string json = fast.json.take();
  const std::string xml = without_frame(fast.xml.take());
  // Characters that cannot be held are reported after the event, which the plain way does not do.
  std::string told;
  for (std::size_t at = 0; at < xml.size();) {
    constexpr std::string_view lossy = "<?zanvik lossy=\"true\"?>";
    const std::size_t found = std::min(xml.find(lossy, at), xml.size());
    told += xml.substr(at, found - at);
    at = found + (found == xml.size() ? 0 : lossy.size());
  }
  EXPECT_TRUE(json == plain.json) << what << "\n" << difference(json, plain.json);
  EXPECT_TRUE(told == plain.xml) << what << "\n" << difference(told, plain.xml);
  return static_cast<std::size_t>(std::count(json.begin(), json.end(), '\n'));
}

TEST(export_two_ways, samples) {
  std::size_t events = 0;
  for (const byte_vector& chunk : sample_chunks()) {
    events += agree(chunk, false, "sample");
    agree(chunk, true, "sample with slack");
  }
  EXPECT_GT(events, 80u);
}

// Bytes changed where events are; the seed is fixed, so that a failure can be repeated.
TEST(export_two_ways, damaged_samples) {
  std::mt19937 random(7);
  const auto chunks = sample_chunks();
  std::size_t events = 0;
  for (int round = 0; round < 150; ++round) {
    byte_vector chunk = chunks[random() % chunks.size()];
    for (unsigned n = 0; n < 1 + random() % 4; ++n) {
      chunk[512 + random() % 12000] = static_cast<std::byte>(random());
    }
    events += agree(chunk, round % 2 == 0, "round " + std::to_string(round));
    if (HasFailure()) return;
  }
  EXPECT_GT(events, 1000u);
}

TEST(export_two_ways, real_logs) {
  const std::filesystem::path folder = ZANVIK_SOURCE_DIR "/../shared/logs";
  if (!exists(folder)) GTEST_SKIP() << "there are no real logs beside the source folder";
  std::size_t events = 0;
  for (const auto& entry : std::filesystem::recursive_directory_iterator(folder)) {
    if (entry.path().extension() != ".evtx") continue;
    std::ifstream in(entry.path(), std::ios::binary);
    const std::string bytes{std::istreambuf_iterator<char>(in), {}};
    const auto log = std::as_bytes(std::span(bytes));
    // A few chunks are enough to see the shapes of a log, and keep the test short.
    for (std::size_t at = file_header_bytes; at + chunk_bytes <= log.size();
         at += 7 * chunk_bytes) {
      if (std::memcmp(log.data() + at, "ElfChnk", 8) != 0) continue;
      events += agree(log.subspan(at, chunk_bytes), false, entry.path().string());
      if (HasFailure()) return;
    }
  }
  EXPECT_GT(events, 10000u);
}

}  // namespace
}  // namespace zanvik::testing
