// Whole runs of the built program against expected output: a folder of tests/golden a run, with
// `args`, one argument a line, and `expected`, all of standard output. The program runs in the
// source folder under the name "zanvik".
//
// The expected files are worked out by hand from the rules of the tables, never copied from the
// program. When a run differs, what it wrote is kept as <name>.actual in the working folder of the
// test, for a look with diff.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <ostream>
#include <string>
#include <vector>

#include "program_run.h"

namespace zanvik::testing {
namespace {

const std::filesystem::path golden_folder = ZANVIK_SOURCE_DIR "/tests/golden";

std::vector<std::string> golden_names() {
  std::vector<std::string> names;
  for (const auto& entry : std::filesystem::directory_iterator(golden_folder)) {
    if (entry.is_directory()) names.push_back(entry.path().filename().string());
  }
  std::sort(names.begin(), names.end());
  return names;
}

// The first line that differs, from both texts, with its number.
std::string first_difference(const std::string& expected, const std::string& actual) {
  const auto left = lines_of(expected), right = lines_of(actual);
  std::size_t n = 0;
  while (n < left.size() && n < right.size() && left[n] == right[n]) ++n;
  const auto line = [n](const auto& lines) { return n < lines.size() ? lines[n] : "(no line)"; };
  return "line " + std::to_string(n + 1) + "\n  expected: " + line(left) +
         "\n  actual:   " + line(right);
}

class golden : public ::testing::TestWithParam<std::string> {};

TEST_P(golden, run_writes_what_is_expected) {
  const std::filesystem::path folder = golden_folder / GetParam();
  const std::string expected = file_text((folder / "expected").string());
  ASSERT_FALSE(expected.empty()) << "no expected output in " << folder;
  const auto args = lines_of(file_text((folder / "args").string()));
  for (const std::string& word : args) {
    const bool real = word.starts_with("../shared/");
    if (real && !exists(ZANVIK_SOURCE_DIR / std::filesystem::path(word))) {
      GTEST_SKIP() << "there are no real logs beside the source folder";
    }
  }
  const program_run run = run_zanvik(args, {.input = "", .folder = ZANVIK_SOURCE_DIR});
  EXPECT_EQ(run.status, 0) << run.err;
  if (run.out == expected) return;
  const auto kept = std::filesystem::absolute(GetParam() + ".actual");
  std::ofstream(kept, std::ios::binary) << run.out;
  ADD_FAILURE() << first_difference(expected, run.out) << "\nlook at it with: diff "
                << folder / "expected"
                << " " << kept;
}

INSTANTIATE_TEST_SUITE_P(runs, golden, ::testing::ValuesIn(golden_names()),
                         [](const auto& named) { return named.param; });

}  // namespace
}  // namespace zanvik::testing
