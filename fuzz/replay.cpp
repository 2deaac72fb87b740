// Runs a fuzz target over the files of a folder, without a fuzzing engine, so that inputs once
// found stay ordinary test cases.
//   in   the target's name, and the folder; subfolders are not walked.
//   out  status 0 if every file was run, 1 if there was none.
// A target fails by an abort or a sanitizer, which ends the process.

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <system_error>
#include <vector>

#include "fuzz_target.h"

int main(int argc, char** argv) {
  const auto* target = argc == 3 ? zanvik::fuzz::find_target(argv[1]) : nullptr;
  if (target == nullptr) {
    std::fprintf(stderr, "usage: %s PARSER FOLDER\n", argv[0]);
    return 1;
  }
  std::size_t count = 0;
  std::error_code error;
  for (const auto& entry : std::filesystem::directory_iterator(argv[2], error)) {
    if (!entry.is_regular_file()) continue;
    std::ifstream in(entry.path(), std::ios::binary);
    const std::vector<char> read{std::istreambuf_iterator<char>(in), {}};
    std::printf("%s\n", entry.path().c_str());  // the last name shown is the one that failed
    std::fflush(stdout);
    const zanvik::fuzz::exact_bytes bytes(std::as_bytes(std::span(read)));
    target->run(bytes.span());
    ++count;
  }
  std::printf("%zu inputs\n", count);
  return count == 0 ? 1 : 0;
}
