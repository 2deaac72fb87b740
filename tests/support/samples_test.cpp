// The logs in samples/ are what the code makes, byte for byte: an edited sample, or a builder that
// changed what it writes, is noticed here. `make_samples samples` writes them again.
#include <gtest/gtest.h>

#include <cstring>

#include "samples_builder.h"
#include "scratch_dir.h"

namespace zanvik::testing {
namespace {

TEST(samples, are_what_the_builders_make) {
  const std::pair<const char*, log_builder (*)()> rows[] = {{"security.evtx", security_sample},
                                                            {"system.evtx", system_sample},
                                                            {"sysmon.evtx", sysmon_sample},
                                                            {"odd.evtx", odd_sample}};
  for (const auto& [name, make] : rows) {
    const std::string kept = file_text(std::string(ZANVIK_SOURCE_DIR "/samples/") + name);
    const log_builder made = make();
    ASSERT_EQ(kept.size(), made.size()) << name;
    EXPECT_EQ(std::memcmp(kept.data(), made.bytes().data(), kept.size()), 0) << name;
  }
}

}  // namespace
}  // namespace zanvik::testing
