// The channel of a first record, by the outline of its template and from its whole text.
#include "evtx/channel_finder.h"

#include <gtest/gtest.h>

#include "event_builder.h"
#include "evtx/first_record.h"

namespace zanvik {
namespace {

using namespace zanvik::testing;

std::vector<std::byte> bytes_of(const chunk_builder& chunk) {
  const auto built = chunk.build();
  const auto* data = reinterpret_cast<const std::byte*>(built.bytes.data());
  return {data, data + built.bytes.size()};
}

std::string shown(const found_channel& found) {
  return found.text ? *found.text : found.closed ? "(none)" : "(open)";
}

// A template whose text has the channel after the values of slots 0 and 1.
std::vector<std::byte> chunk_of(std::vector<slot_value> values, std::string name = "Channel") {
  const template_definition definition{"11111111-2222-3333-4455-667788990011",
                                       [name](bxml_builder& b) {
                                         b.fragment_header().open("Event").close_start();
                                         b.open("A").close_start().normal_sub(0, 1).end_element();
                                         b.open(name).close_start().normal_sub(1, 1).end_element();
                                         b.end_element().end_of_stream();
                                       }};
  return bytes_of(chunk_builder({template_record(1, 133000000000000000, definition, values)}));
}

// One finder for all, like the one of a run.
TEST(channel_finder, says_what_the_whole_text_says) {
  struct row {
    const char* reason;
    std::vector<std::byte> chunk;
    const char* expected;
  };
  const row rows[] = {
      {"a slot's", bytes_of(chunk_builder({record(1, {.channel = "Setup"})})), "setup"},
      {"the same body in another log", bytes_of(chunk_builder({record(1, {.channel = "A/B c"})})),
       "a/b c"},
      {"the template's own",
       bytes_of(chunk_builder({record(1, {.channel = "X", .classic = true})})), "\"x\""},
      {"empty, and so shown as its bytes", bytes_of(chunk_builder({record(1, {.channel = ""})})),
       ""},
      {"in two pieces of one body", chunk_of({slot::utf16("a"), slot::utf16("Z")}), "z"},
      {"a value that holds a channel itself",
       chunk_of({slot::utf16("<CHANNEL>no</channel>"), slot::utf16("z")}), "no"},
      {"a value that opens one", chunk_of({slot::utf16("<Channel>"), slot::utf16("z")}),
       "</a>\n<channel>z"},
      {"a number before it", chunk_of({slot::uint32(0x3c3c3c3c), slot::uint8(60)}), "60"},
      {"text in a number of bytes",
       chunk_of({slot::binary(byte_vector(4, std::byte{'<'})), slot::utf16("z")}), "z"},
      {"another element", chunk_of({slot::utf16("a"), slot::utf16("z")}, "Chanel"), "(none)"},
      {"a value that only opens", chunk_of({slot::utf16("<channel>"), slot::utf16("z")}, "Chanel"),
       "(open)"},
  };
  channel_finder finder;
  for (int round = 0; round < 2; ++round) {
    for (const row& r : rows) {
      EXPECT_EQ(shown(finder.find(r.chunk)), r.expected) << r.reason;
      const auto text = first_record_text(r.chunk);
      EXPECT_EQ(shown(channel_in_text(text.value_or(""))), r.expected) << r.reason;
    }
  }
}

// Every byte of the record damaged in turn, after sound logs of the same template.
TEST(channel_finder, says_it_of_damaged_records_too) {
  channel_finder finder;
  auto chunk = bytes_of(chunk_builder({record(1, {.channel = "Setup"})}));
  EXPECT_EQ(shown(finder.find(chunk)), "setup");
  const std::size_t end = 512 + 8 + static_cast<std::size_t>(chunk[517]) * 256;
  for (std::size_t at = 512; at < end; ++at) {
    const std::byte sound = chunk[at];
    for (const std::byte damage : {sound ^ std::byte{1}, std::byte{'<'}, std::byte{0xff}}) {
      chunk[at] = damage;
      const std::string expected = shown(channel_in_text(first_record_text(chunk).value_or("")));
      EXPECT_EQ(shown(finder.find(chunk)), expected) << "byte " << at;
    }
    chunk[at] = sound;
  }
}

}  // namespace
}  // namespace zanvik
