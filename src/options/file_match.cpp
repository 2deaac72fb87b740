#include "options/file_match.h"

#include <sys/stat.h>

#include <algorithm>
#include <optional>
#include <string_view>

#include "base/fileio.h"
#include "base/text.h"
#include "base/utf16.h"

namespace zanvik {
namespace {

// A file about which nothing is known but an impossible time is rejected too.
bool in_window(const walk_options& options, const std::string& path, file_info& info) {
  if (!options.cmd_start.on && !options.cmd_stop.on) return true;
  if (!info.filled && !get_file_info(path, info)) return false;
  if (info.modified <= 0) return false;
  if (options.cmd_start.on && info.modified < options.cmd_start.unix_seconds) return false;
  return !options.cmd_stop.on || info.modified <= options.cmd_stop.unix_seconds;
}

// A path in its two parts, in lower case.
struct lower_path {
  std::string folder;
  std::string name;
};

// Unlike in split_path, a separator at the very start splits like any other.
lower_path split_lower(std::string_view path) {
  std::size_t at = path.rfind('\\');
  if (at == std::string_view::npos) at = path.rfind('/');
  const bool divided = at != std::string_view::npos;
  const std::string_view name = divided ? path.substr(at + 1) : path;
  if (name == "..") return {to_lower(path), "."};
  return {divided ? to_lower(path.substr(0, at)) : ".", to_lower(name)};
}

// Only the first position of `name` is considered. This is meant.
bool ends_at_divider(std::string_view folder, std::string_view name) {
  const std::size_t at = folder.find(name);
  if (at == std::string_view::npos) return false;
  const std::size_t end = at + name.size();
  return end == folder.size() || folder[end] == '/';
}

bool folder_matches(const std::string& folder, const std::string& name) {
  if (folder.find(name) != std::string::npos) return ends_at_divider(folder, name);
  std::string slashed = folder;
  replace_char(slashed, '\\', '/', false);
  return ends_at_divider(slashed, name);
}

bool name_matches(const std::string& file_name, const file_filter_entry& entry) {
  const std::string& name = entry.name;
  const std::size_t at = file_name.find(name);
  if (entry.star_front && entry.star_back) return at != std::string::npos;
  if (entry.star_front) {
    // The first occurrence must be at the end of the name: `*.log` does not match "a.log.log". This
    // is meant.
    return at != std::string::npos && at + name.size() == file_name.size();
  }
  if (entry.star_back) return at == 0;
  return !name.empty() && name == file_name;
}

bool signature_matches(const std::string& path, const file_filter_entry& entry, bool& undecided) {
  uni::fileio file;
  if (!file.open(path)) return false;
  const std::uint64_t size = file.get_size();
  const std::size_t length = entry.signature.size();
  if (length > size || entry.signature_offset > size - length) {
    undecided = true;
    return false;
  }
  std::vector<std::byte> bytes;
  return file.read(bytes, length, entry.signature_offset) && bytes == entry.signature;
}

bool entry_matches(const std::string& path, const lower_path& parts, const file_filter_entry& entry,
                   bool& undecided) {
  if (entry.is_path && folder_matches(parts.folder, entry.name)) return true;
  if (entry.match_all || name_matches(parts.name, entry)) return true;
  return !entry.signature.empty() && signature_matches(path, entry, undecided);
}

}  // namespace

bool get_file_info(const std::string& path, file_info& info) {
  struct stat status = {};
  if (::stat(path.c_str(), &status) != 0) return false;
  info = {true, status.st_mtim.tv_sec};
  return true;
}

bool match_filters(const walk_options& options, bool& undecided, const std::string& path,
                   const std::vector<file_filter_entry>& filters, file_info* info) {
  undecided = false;
  if (!is_strict_utf8(path)) return false;  // an empty path is not UTF-8 either
  if (info != nullptr && !in_window(options, path, *info)) return false;
  if (filters.empty()) return true;
  const lower_path parts = split_lower(path);
  return std::any_of(filters.begin(), filters.end(), [&](const file_filter_entry& entry) {
    return entry_matches(path, parts, entry, undecided);
  });
}

}  // namespace zanvik
