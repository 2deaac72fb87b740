// A folder for one test, removed with its content at the end of its scope.
#pragma once

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>
#include <string_view>

namespace zanvik::testing {

class scratch_dir {
 public:
  scratch_dir() {
    std::string name = (std::filesystem::temp_directory_path() / "zanvik_test_XXXXXX").string();
    if (::mkdtemp(name.data()) == nullptr) throw std::runtime_error("no scratch folder");
    path_ = name;
  }
  scratch_dir(const scratch_dir&) = delete;
  scratch_dir& operator=(const scratch_dir&) = delete;
  ~scratch_dir() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
  }

  // The path of `name` in the folder, whether or not such a file exists.
  std::string path(std::string_view name) const { return (path_ / name).string(); }
  // Creates the file and returns its path.
  std::string write(std::string_view name, std::string_view bytes) const {
    std::ofstream(path_ / name, std::ios::binary).write(bytes.data(), std::ssize(bytes));
    return path(name);
  }

 private:
  std::filesystem::path path_;
};

// The bytes of a file; none if it cannot be read.
inline std::string file_text(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

}  // namespace zanvik::testing
