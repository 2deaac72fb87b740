// The ledger of bytes that are no log: each byte has its line, and what is given is what is counted.
#include <random>

#include "evt_builder.h"
#include "ledger_of.h"

namespace zanvik::testing {
namespace {

log_ledger carved_ledger(const byte_vector& bytes) {
  const scratch_dir scratch;
  const std::string path = scratch.write(
      "input", std::string(reinterpret_cast<const char*>(bytes.data()), bytes.size()));
  log_ledger ledger;
  log_finder finder([&ledger](found_log& found) { inspect_log(found, ledger); },
                    [](const std::string&, const std::string& what) { ADD_FAILURE() << what; });
  finder.carve(carve_what::everything);
  finder.find(path);
  return ledger;
}

TEST(carve_ledger, every_byte_of_the_input_has_its_line) {
  std::mt19937 random(5);
  const auto noise = [&](std::size_t size) {
    byte_vector bytes(size);
    for (std::byte& byte : bytes) byte = static_cast<std::byte>(random());
    return bytes;
  };
  const auto whole = chunk_builder({record(1), record(2)}).slack(record(90)).build();
  const auto cut = chunk_builder({record(11), record(12), record(13)}).build();
  const evt_builder legacy = evt_builder().add({}).add({});
  byte_vector input = noise(1000);
  append_bytes(input, whole.bytes);
  append_bytes(input, noise(77));
  append_bytes(input, std::span(cut.bytes).first(cut.record_offsets[2] + 40));
  append_bytes(input, noise(5000));
  append_bytes(input, legacy.bytes());
  const log_ledger ledger = carved_ledger(input);
  EXPECT_EQ(ledger.format, "carved");
  EXPECT_EQ(ledger.size, input.size());
  EXPECT_EQ(ledger.account.bytes(), input.size());
  EXPECT_EQ(ledger.account.line(area_kind::record_read).records, 2u);
  EXPECT_EQ(ledger.account.line(area_kind::free_record).records, 1u);
  EXPECT_EQ(ledger.account.line(area_kind::carved_record).records, 2u);
  EXPECT_EQ(ledger.account.line(area_kind::carved_record).bytes,
            cut.record_offsets[2] - cut.record_offsets[0]);
  EXPECT_EQ(ledger.account.line(area_kind::carved_header).bytes, 512u);
  EXPECT_EQ(ledger.account.line(area_kind::carved_legacy).records, 2u);
  EXPECT_EQ(ledger.account.given(), 6u);
  EXPECT_EQ(ledger.account.given_with_slack, 7u);
  ASSERT_EQ(ledger.chunks.size(), 1u);
  EXPECT_EQ(ledger.chunks[0].offset, 1000u);
}

}  // namespace
}  // namespace zanvik::testing
