// Runs a fuzz target over the files of a folder, without a fuzzing engine, so that inputs once
// found to be interesting stay ordinary test cases.
//   in   one argument: the folder; subfolders are not walked.
//   out  status 0 when every file was run, 1 when there was none to run.
// A target that fails does so by an assertion or a sanitizer, which ends the process.

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <system_error>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size_bytes);

int main(int argc, char** argv) {
  if (argc != 2) {
    std::fprintf(stderr, "usage: %s FOLDER\n", argv[0]);
    return 1;
  }
  std::size_t count = 0;
  std::error_code error;
  for (const auto& entry : std::filesystem::directory_iterator(argv[1], error)) {
    if (!entry.is_regular_file()) continue;
    std::ifstream in(entry.path(), std::ios::binary);
    const std::vector<char> bytes{std::istreambuf_iterator<char>(in), {}};
    std::printf("%s\n", entry.path().c_str());  // the last name shown is the one that failed
    std::fflush(stdout);
    LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size());
    ++count;
  }
  std::printf("%zu inputs\n", count);
  return count == 0 ? 1 : 0;
}
