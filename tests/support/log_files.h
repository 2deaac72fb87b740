// The logs that tests read: the samples always, and the real logs beside the source folder where
// there are any.
#pragma once

#include <algorithm>
#include <filesystem>
#include <string>
#include <vector>

namespace zanvik::testing {

inline std::vector<std::string> log_files(const std::string& extension) {
  const std::filesystem::path source = ZANVIK_SOURCE_DIR;
  std::vector<std::string> paths;
  for (const auto& folder : {source / "samples", source.parent_path() / "shared" / "logs"}) {
    std::error_code missing;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(folder, missing)) {
      if (entry.path().extension() == extension) paths.push_back(entry.path().string());
    }
  }
  std::sort(paths.begin(), paths.end());
  return paths;
}

}  // namespace zanvik::testing
