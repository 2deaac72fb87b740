// Writes the logs that bench/bounds times: make_hostile FOLDER CHUNKS
//
// For each trick it writes a log FOLDER/<number>-<CHUNKS>/<name that reports test>, and a line on
// standard output: path, options, name of the trick, with tabs between them.
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <fstream>
#include <iostream>

#include "hostile_builder.h"

namespace {

void write(const std::filesystem::path& path, const zanvik::testing::byte_vector& bytes) {
  std::filesystem::create_directories(path.parent_path());
  std::ofstream out(path, std::ios::binary);
  out.exceptions(std::ios::failbit | std::ios::badbit);
  out.write(reinterpret_cast<const char*>(bytes.data()),
            static_cast<std::streamsize>(bytes.size()));
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 3) return 1;
  const auto chunks = static_cast<unsigned>(std::strtoul(argv[2], nullptr, 10));
  try {
    int number = 0;
    for (const auto& trick : zanvik::testing::hostile_tricks()) {
      const std::string folder = std::to_string(++number) + "-" + argv[2];
      const auto path = std::filesystem::path(argv[1]) / folder / trick.file_name;
      write(path, zanvik::testing::hostile_log(trick, chunks));
      std::cout << path.string() << '\t';
      for (const std::string& option : trick.options) std::cout << option << ' ';
      std::cout << '\t' << trick.name << '\n';
    }
  } catch (const std::exception& problem) {
    std::cerr << problem.what() << '\n';
    return 1;
  }
  return 0;
}
