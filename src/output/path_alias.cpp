#include "output/path_alias.h"

#include "base/text.h"

namespace zanvik {

std::string apply_alias(const output_format& format, std::string_view path) {
  if (format.alias_files.empty() && format.alias_paths.empty()) return std::string(path);
  const std::string lowered = to_lower(path);
  const auto file = format.alias_files.find(lowered);
  if (file != format.alias_files.end()) return file->second;
  for (const auto& [key, alias] : format.alias_paths) {
    if (key.size() >= path.size()) continue;
    const std::size_t found = lowered.find(key);
    if (found == std::string::npos) continue;
    // The text before the key is dropped, wherever the key is in the path.
    return alias + std::string(path.substr(found + key.size()));
  }
  return std::string(path);
}

}  // namespace zanvik
