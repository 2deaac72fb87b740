// Logs that were crafted to be slow or large: every run ends, and twice the log gives at most twice
// the output. bench/bounds measures their time and memory.
#include <gtest/gtest.h>

#include "hostile_builder.h"
#include "program_run.h"

namespace zanvik::testing {
namespace {

std::size_t output_of(const hostile_trick& trick, unsigned chunks) {
  const scratch_dir scratch;
  const byte_vector log = hostile_log(trick, chunks);
  const std::string path = scratch.write(std::string(trick.file_name),
                                         {reinterpret_cast<const char*>(log.data()), log.size()});
  std::vector<std::string> args = {"-log", path, "-quiet"};
  args.insert(args.end(), trick.options.begin(), trick.options.end());
  const program_run run = run_zanvik(args);
  EXPECT_EQ(run.status, 0);
  EXPECT_EQ(run.err, "");
  return run.out.size();
}

TEST(work_bounds, output_grows_no_faster_than_the_log) {
  constexpr unsigned chunks = 6;
  constexpr std::size_t most_for_a_byte = 48;
  for (const hostile_trick& trick : hostile_tricks()) {
    SCOPED_TRACE(trick.name);
    if (trick.options.empty()) continue;  // padding takes much room, but no other path
    const std::size_t once = output_of(trick, chunks);
    const std::size_t twice = output_of(trick, 2 * chunks);
    EXPECT_LE(twice, 2 * once + once / 10);
    EXPECT_LE(twice, most_for_a_byte * 2 * chunks * 65536);
  }
}

// What a chunk's templates may add to its events is bounded, whatever stands in them.
TEST(work_bounds, whole_events_are_bounded_too) {
  constexpr unsigned chunks = 4;
  constexpr std::size_t most_for_a_byte = 128;
  for (const hostile_trick& trick : hostile_tricks()) {
    const scratch_dir scratch;
    const byte_vector log = hostile_log(trick, chunks);
    const std::string path = scratch.write(std::string(trick.file_name),
                                           {reinterpret_cast<const char*>(log.data()), log.size()});
    const program_run run = run_zanvik({"export", "-q", path});
    EXPECT_LE(run.out.size(), most_for_a_byte * log.size()) << trick.name;
  }
}

}  // namespace
}  // namespace zanvik::testing
