// Knowledge about templates never shows in a result: a chunk reads the same whatever was read
// before it, and by either path.
#include <gtest/gtest.h>

#include "evtx/templates/template_bodies.h"
#include "evtx/templates/template_catalogue.h"
#include "hostile_builder.h"
#include "read_back.h"

namespace zanvik::testing {
namespace {

constexpr const char* some_guid = "11111111-2222-3333-4455-667788990011";
constexpr std::uint64_t some_time = 133000000000000000;

// The records of each block, read by one reader, one block after the other.
std::vector<std::vector<std::string>> read_in_turn(std::vector<byte_vector> blocks, bool quick) {
  const time_formats format;
  record_reader reader(format, quick);
  std::vector<std::vector<std::string>> read;
  for (byte_vector& block : blocks) {
    keeping_sink sink;
    walk_settings settings;
    settings.inc_slack = true;
    walk_evtx_block(block, 0, reader, sink, settings);
    std::vector<std::string>& records = read.emplace_back();
    for (const read_record& record : sink.records) records.push_back(record.all);
  }
  return read;
}

TEST(template_store, crafted_chunks_read_the_same_after_each_other_and_by_both_paths) {
  std::vector<byte_vector> chunks;
  std::vector<std::vector<std::string>> alone;
  for (const hostile_trick& trick : hostile_tricks()) {
    if (!trick.chunk) continue;
    chunks.push_back(trick.chunk(3));
    alone.push_back(read_in_turn({chunks.back()}, true).front());
    EXPECT_EQ(read_in_turn({chunks.back()}, false).front(), alone.back()) << trick.name;
  }
  std::vector<byte_vector> twice = chunks;
  twice.insert(twice.end(), chunks.begin(), chunks.end());
  const auto together = read_in_turn(twice, true);
  for (std::size_t i = 0; i < together.size(); ++i) {
    EXPECT_EQ(together[i], alone[i % alone.size()]) << "block " << i;
  }
}

// A body at a given offset, in a chunk where these bytes follow it.
struct placed_body {
  byte_vector chunk;
  std::uint32_t definition = 0;
  std::uint32_t size = 0;
};

placed_body place_body(const bxml_writer& body, const std::vector<std::string>& names_before = {},
                       const byte_vector& behind = {}) {
  placed_body placed;
  placed.chunk.resize(1000);
  chunk_tables tables;
  bxml_builder writer(placed.chunk, tables);
  // Names of elements that are in the chunk already.
  for (const std::string& name : names_before) writer.open(name).close_empty();
  placed.definition = writer.position();
  writer.definition({some_guid, body});
  placed.size = writer.position() - placed.definition - 24;
  append_bytes(placed.chunk, behind);
  placed.chunk.resize(chunk_bytes);
  return placed;
}

std::uint32_t number_of(template_bodies& bodies, const placed_body& placed) {
  work_budget budget;
  bxml_memory memory;
  memory.start_chunk();
  const chunk_view view{byte_cursor(placed.chunk), placed.chunk.size(), 0, &budget, &memory};
  return bodies.identify(view, placed.definition, placed.size,
                         *definition_guid(view, placed.definition));
}

bxml_writer body_of(std::string name, std::string attribute, std::string text) {
  return [=](bxml_builder& b) {
    b.fragment_header().open_with_attributes(name).attribute(attribute).value(text);
    b.close_start().optional_sub(3, 1).entity_ref("amp").end_element().end_of_stream();
  };
}

TEST(template_bodies, copies_are_one_body_wherever_their_names_stand) {
  template_bodies bodies;
  const auto body = body_of("Data", "Name", "User");
  const std::uint32_t first = number_of(bodies, place_body(body));
  ASSERT_NE(first, 0u);
  EXPECT_EQ(number_of(bodies, place_body(body)), first);
  EXPECT_EQ(number_of(bodies, place_body(body, {"Name"})), first);
  EXPECT_EQ(number_of(bodies, place_body(body, {"amp", "Data", "Name"})), first);
  // Each of these differs in one thing that the decoder sees.
  for (const auto& other : {body_of("Date", "Name", "User"), body_of("Data", "Nama", "User"),
                            body_of("Data", "Name", "Usar"), body_of("Data", "Name", "")}) {
    for (const std::vector<std::string>& before : {std::vector<std::string>{}, {"Name", "amp"}}) {
      const std::uint32_t number = number_of(bodies, place_body(other, before));
      EXPECT_NE(number, 0u);
      EXPECT_NE(number, first);
    }
  }
}

TEST(template_bodies, a_body_that_makes_its_decoder_look_elsewhere_is_not_recognised) {
  template_bodies bodies;
  const auto with_tail = [](byte_vector tail) {
    return [tail](bxml_builder& b) { b.fragment_header().open("A").close_start().raw(tail); };
  };
  const byte_vector text = bytes_of({5, 1, 1, 0, 'x', 0});
  byte_vector closed = text;
  append_bytes(closed, bytes_of({4, 0}));
  byte_vector bare = text;
  append_bytes(bare, bytes_of({0}));
  struct row {
    const char* reason;
    bxml_writer body;
    bool recognised;
  };
  for (const row& each : {
           row{"the whole stream is there", with_tail(closed), true},
           row{"the NUL behind a text may be the end token and a byte behind the body",
               with_tail(bare), false},
           row{"the stream has no end", with_tail(text), false},
           row{"an element needs the bytes behind it", with_tail(bytes_of({1, 0, 0})), false},
           row{"a flag that the token never has", with_tail(bytes_of({0x44, 0})), false},
           row{"another fragment inside", with_tail(bytes_of({0x0f, 1, 1, 0, 0})), false},
       }) {
    for (const byte_vector& behind : {bytes_of({1, 2}), bytes_of({0, 0, 4})}) {
      EXPECT_EQ(number_of(bodies, place_body(each.body, {}, behind)) != 0, each.recognised)
          << each.reason;
    }
  }
}

// A record after damage is cut to its chunk, which may change a byte of a literal that was read
// before.
TEST(template_bodies, a_changed_byte_makes_another_body_unless_no_decoder_sees_it) {
  template_bodies bodies;
  const placed_body placed = place_body(body_of("Data", "Name", "User"));
  const std::uint32_t first = number_of(bodies, placed);
  unsigned unseen = 0;
  for (std::uint32_t at = placed.definition + 24; at < placed.definition + 24 + placed.size; ++at) {
    placed_body changed = placed;
    changed.chunk[at] ^= std::byte{1};
    if (number_of(bodies, changed) == first) ++unseen;
  }
  constexpr unsigned links = 3 * 4, hashes = 3 * 2, element_size = 2, attributes_size = 4;
  EXPECT_EQ(unseen, links + hashes + element_size + attributes_size);
}

}  // namespace
}  // namespace zanvik::testing
