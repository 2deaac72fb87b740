// The targets with the fuzzing engine: the name by which the program is called, fuzz_<parser>,
// selects the target.

#include <cstdio>
#include <cstdlib>
#include <string_view>

#include "fuzz_target.h"

namespace {

const zanvik::fuzz::target* chosen = nullptr;

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char*** argv) {
  std::string_view name = **argv;
  name.remove_prefix(name.rfind('/') + 1);  // npos + 1 is 0
  if (name.starts_with("fuzz_")) name.remove_prefix(5);
  chosen = zanvik::fuzz::find_target(name);
  if (chosen == nullptr) {
    std::fprintf(stderr, "no target %s\n", **argv);
    std::exit(1);
  }
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size_bytes) {
  chosen->run(std::as_bytes(std::span(data, size_bytes)));
  return 0;
}
