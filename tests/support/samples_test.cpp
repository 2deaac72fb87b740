// The logs in samples/ are what the code makes, byte for byte: a sample that somebody edited, or a
// builder that changed what it writes, shows here. `make_samples samples` writes them anew.
#include <gtest/gtest.h>

#include <cstring>
#include <fstream>
#include <iterator>
#include <string>

#include "samples_builder.h"

namespace zanvik::testing {
namespace {

TEST(samples, are_what_the_builders_make) {
  const struct {
    const char* name;
    log_builder (*make)();
  } rows[] = {
      {"security.evtx", security_sample}, {"system.evtx", system_sample}, {"odd.evtx", odd_sample}};
  for (const auto& row : rows) {
    std::ifstream file(std::string(ZANVIK_SOURCE_DIR "/samples/") + row.name, std::ios::binary);
    ASSERT_TRUE(file) << row.name;
    const std::string kept{std::istreambuf_iterator<char>(file), {}};
    const log_builder made = row.make();
    ASSERT_EQ(kept.size(), made.size()) << row.name;
    EXPECT_EQ(std::memcmp(kept.data(), made.bytes().data(), kept.size()), 0) << row.name;
  }
}

}  // namespace
}  // namespace zanvik::testing
