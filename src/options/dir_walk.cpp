#include "options/dir_walk.h"

#include <dirent.h>
#include <sys/stat.h>

#include <memory>

#include "base/text.h"
#include "base/utf16.h"
#include "options/file_match.h"

namespace zanvik::qxportdir {
namespace {

struct folder_closer {
  void operator()(DIR* folder) const { ::closedir(folder); }
};

// The kind as lstat reports it; the listing usually knows it already.
bool is_folder_entry(const dirent& entry, const std::string& path) {
  if (entry.d_type != DT_UNKNOWN) return entry.d_type == DT_DIR;
  struct stat status = {};
  return ::lstat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode);
}

// A name before and after its last dot, both `*` if empty.
struct name_pattern {
  explicit name_pattern(std::string_view pattern) {
    const std::size_t dot = pattern.rfind('.');
    name = to_lower(pattern.substr(0, dot));
    if (dot != std::string_view::npos) extension = to_lower(pattern.substr(dot + 1));
    if (name.empty()) name = "*";
    if (extension.empty()) extension = "*";
  }

  bool matches(std::string_view file) const {
    if (name == "*" && extension == "*") return true;
    const std::size_t dot = file.rfind('.');
    const std::string_view behind =
        dot == std::string_view::npos ? std::string_view() : file.substr(dot + 1);
    return (name == "*" || to_lower(file.substr(0, dot)) == name) &&
           (extension == "*" || to_lower(behind) == extension);
  }

  std::string name;
  std::string extension;
};

// A path in which stars before `from` are literal.
struct star_path {
  std::string text;
  std::size_t from = 0;
};

// Puts the folders that match the first star part of `path` into `out`.
void expand_star(const star_path& path, std::size_t at, std::deque<star_path>& out) {
  const std::string rest = path.text.substr(at + 3);
  list_folder(path.text.substr(0, at + 1), 0, "*.*", [&](const _DIR_NODE& node) {
    // One before the name's end, because the `/` there may begin the next star part.
    if (node.is_dir) out.push_back({node.path + rest, node.path.size() - 1});
  });
}

}  // namespace

std::vector<std::string> wildcard_folders(std::string_view root) {
  std::vector<std::string> folders;
  if (root.find('/') == std::string_view::npos) return folders;
  std::deque<star_path> paths{{std::string(root), 0}};
  if (!root.ends_with('/')) paths.front().text += '/';
  for (; !paths.empty(); paths.pop_front()) {
    star_path path = std::move(paths.front());
    if (const std::size_t at = path.text.find("/*/", path.from); at != std::string::npos) {
      expand_star(path, at, paths);
      continue;
    }
    if (const std::size_t at = path.text.find('*', path.from); at != std::string::npos) {
      path.text.resize(at);
      if (!path.text.ends_with('/')) path.text += '/';
    }
    folders.push_back(std::move(path.text));
  }
  return folders;
}

void list_folder(const std::string& folder, std::int32_t depth, std::string_view pattern,
                 const std::function<void(const _DIR_NODE&)>& use) {
  const std::unique_ptr<DIR, folder_closer> listing(::opendir(folder.c_str()));
  if (!listing) return;
  const name_pattern wanted(pattern);
  _DIR_NODE node;
  while (const dirent* entry = ::readdir(listing.get())) {
    node.name = entry->d_name;
    if (node.name == "." || node.name == ".." || !is_strict_utf8(node.name)) continue;
    node.path.assign(folder).append(node.name);
    node.is_dir = is_folder_entry(*entry, node.path);
    node.depth = node.is_dir ? depth + 1 : depth;
    if (node.is_dir) node.path += '/';
    if (node.is_dir || wanted.matches(node.name)) use(node);
  }
}

bool stdin_stream_ex::start_stdin() {
  walking_ = false;
  return true;
}

bool stdin_stream_ex::start_walk(std::string_view root, std::int32_t max_depth,
                                 const std::vector<file_filter_entry>& filters) {
  pending_dirs_.clear();
  pending_files_.clear();
  next_file_ = 0;
  max_depth_ = max_depth;
  filters_ = filters;
  std::string path(root);
  if (!accept_path(path, true)) return false;
  if (is_strict_utf8(path)) {
    for (std::string& folder : wildcard_folders(path)) pending_dirs_.emplace_back(folder, 0);
  }
  walking_ = true;
  return true;
}

bool stdin_stream_ex::read_line(std::string& out, bool strip) {
  return walking_ ? next_walk_file(out) : uni::stdin_stream::read_line(out, strip);
}

bool stdin_stream_ex::accept_path(std::string& path, bool is_folder) const {
  constexpr std::string_view head = R"(\\?\)";
  if (path.starts_with(head) && !to_lower(path).starts_with(R"(\\?\global)")) {
    path.erase(0, head.size());
  }
  if (is_folder) return true;
  file_info info;
  bool undecided = false;
  return match_filters(options_, undecided, path, filters_, &info) || undecided;
}

void stdin_stream_ex::list_next_folder() {
  const auto [folder, depth] = std::move(pending_dirs_.front());
  pending_dirs_.pop_front();
  pending_files_.clear();
  next_file_ = 0;
  if (depth > max_depth_) return;
  folder_ = folder;
  std::string path;
  list_folder(folder, depth, "*.*", [&](const _DIR_NODE& node) {
    if (node.is_dir) {
      // One that is too deep would only wait to be dropped.
      if (node.depth <= max_depth_) pending_dirs_.emplace_back(node.path, node.depth);
    } else if (accept_path(path = node.path, false)) {
      pending_files_.append(node.name).push_back('\0');
    }
  });
}

bool stdin_stream_ex::next_walk_file(std::string& out) {
  while (next_file_ == pending_files_.size()) {
    if (pending_dirs_.empty()) return false;
    list_next_folder();
  }
  const std::string_view name(pending_files_.c_str() + next_file_);
  out.assign(folder_).append(name);
  next_file_ += name.size() + 1;
  return true;
}

}  // namespace zanvik::qxportdir
