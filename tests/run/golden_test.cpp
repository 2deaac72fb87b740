// Whole runs of the built program compared with expected output: each run is a folder of
// tests/golden with `args`, one argument per line, and `expected`, all of standard output. The
// program runs in the source folder under the name "zanvik".
//
// The expected files are worked out by hand from the rules of the tables, never copied from the
// program. If a run differs, its output is kept as <name>.actual in the working folder of the test,
// for diff.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <ostream>
#include <string>
#include <vector>

#include "program_run.h"
#include "scratch_dir.h"

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

// The runs go through a program that looks for verbs first, and none of them is taken for one. A
// log that has the name of a verb is a log.
TEST(verbs, leave_classic_runs_alone) {
  if (run_zanvik({"export", "--help"}).status != 0) GTEST_SKIP() << "the program has no verbs";
  for (const std::string& name : golden_names()) {
    const auto args = lines_of(file_text((golden_folder / name / "args").string()));
    ASSERT_FALSE(args.empty()) << name;
    EXPECT_TRUE(args.front().starts_with('-')) << name << ": " << args.front();
  }
  const scratch_dir scratch;
  const std::string log = file_text(ZANVIK_SOURCE_DIR "/samples/security.evtx");
  scratch.write("export", log);
  scratch.write("other", log);
  const auto listed = [&](const char* name) {
    auto run =
        run_zanvik({"-csv", "-quiet", "-log", name}, {.input = "", .folder = scratch.path("")});
    EXPECT_EQ(run.status, 0) << run.err;
    const std::size_t first_line = run.out.find('\n');  // has the command line
    return first_line == std::string::npos ? run.out : run.out.substr(first_line);
  };
  const std::string rows = listed("other");
  EXPECT_GT(std::count(rows.begin(), rows.end(), '\n'), 40);
  std::string named = listed("export");
  for (std::size_t at = 0; (at = named.find("export", at)) != std::string::npos;) {
    named.replace(at, 6, "other");
  }
  EXPECT_EQ(named, rows);
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
