#include "base/path_text.h"

#include <algorithm>
#include <cstdlib>

#include "base/limits.h"
#include "base/text.h"

namespace zanvik {
namespace {

constexpr std::size_t longest_path_expanded = 512;

constexpr std::string_view shadow_copy_device = R"(\\?\GLOBALROOT\Device\HarddiskVolumeShadowCopy)";

// The position of the last `separator` that is not at the very start, or npos.
std::size_t last_divider(std::string_view path, char separator) {
  const auto at = path.rfind(separator);
  return at == 0 ? std::string_view::npos : at;
}

// The value of `name`, if it has one.
bool reference_value(const std::string& name, bool allow_vss, std::string& value) {
  if (const char* found = std::getenv(name.c_str())) {
    value = found;
    return true;
  }
  if (!allow_vss || to_lower(name) != "vss") return false;
  value = shadow_copy_device;
  return true;
}

}  // namespace

bool split_path(std::string_view path, std::string& folder, std::string& name) {
  folder.clear();
  name.clear();
  if (path.empty()) return false;
  auto at = last_divider(path, '\\');
  const bool backslash = at != std::string_view::npos;
  if (!backslash) at = last_divider(path, '/');
  if (at == std::string_view::npos) {
    folder = path == ".." ? ".." : ".";
    name = path == ".." ? "." : path;
    return true;
  }
  folder = path.substr(0, at);
  name = path.substr(at + 1);
  if (name == "..") {
    folder += backslash ? "\\.." : "//..";  // two slashes but one backslash: meant
    name = ".";
  }
  return true;
}

bool split_path_parts(std::string_view path, std::string& folder, std::string& name,
                      std::string& extension) {
  extension.clear();
  if (!split_path(path, folder, name)) return false;
  if (const auto dot = name.rfind('.'); dot != std::string::npos) {
    extension = name.substr(dot + 1);
    name.resize(dot);
  }
  return true;
}

std::string expand_env_references(std::string_view path, bool allow_vss) {
  std::string out(path);
  if (out.size() > longest_path_expanded) return out;
  std::string value;
  std::size_t from = 0;
  for (int followed = 0; followed < limits::references_in_path;) {
    const auto open = out.find('%', from);
    if (open == std::string::npos) break;
    const auto close = out.find('%', open + 1);
    if (close == std::string::npos) break;
    if (reference_value(out.substr(open + 1, close - open - 1), allow_vss, value)) {
      if (value.size() >
          limits::expanded_path_bytes - std::min(out.size(), limits::expanded_path_bytes))
        break;
      out.replace(open, close - open + 1, value);
      from = open;
      ++followed;
    } else {
      from = close + 1;
    }
  }
  return out;
}

}  // namespace zanvik
