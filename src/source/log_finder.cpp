#include "source/log_finder.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <memory>
#include <optional>

#include "base/stop_signal.h"
#include "source/block_reader.h"
#include "source/disk_image.h"
#include "source/log_start.h"

namespace zanvik {
namespace {

constexpr unsigned deepest_folder = 200;  // a path of that many names is longer than the system's

std::uint64_t end_of(int file) {
  const off_t end = ::lseek(file, 0, SEEK_END);
  return end < 0 ? 0 : static_cast<std::uint64_t>(end);
}

struct entry {
  std::string name;
  bool folder = false;
};

// Folders and regular files in `path`, in byte order; nothing when it cannot be listed.
std::optional<std::vector<entry>> list(const std::string& path) {
  const std::unique_ptr<DIR, int (*)(DIR*)> folder(::opendir(path.c_str()), ::closedir);
  if (!folder) return std::nullopt;
  std::vector<entry> entries;
  while (const dirent* found = ::readdir(folder.get())) {
    const std::string name = found->d_name;
    struct stat about {};
    if (name == "." || name == "..") continue;
    if (::fstatat(::dirfd(folder.get()), name.c_str(), &about, AT_SYMLINK_NOFOLLOW) != 0) continue;
    if (S_ISDIR(about.st_mode) || S_ISREG(about.st_mode)) {
      entries.push_back({name, S_ISDIR(about.st_mode)});
    }
  }
  std::sort(entries.begin(), entries.end(),
            [](const entry& a, const entry& b) { return a.name < b.name; });
  return entries;
}

}  // namespace

open_file::~open_file() {
  if (descriptor_ >= 0) ::close(descriptor_);
}

void identify_standard_input(log_source& source) {
  struct stat about {};
  if (::fstat(STDIN_FILENO, &about) != 0 || !S_ISREG(about.st_mode)) return;
  source.device = about.st_dev;
  source.inode = about.st_ino;
}

void log_finder::find(const std::string& path) {
  if (stop_signal() != 0) return;
  if (path == "-") return find_stream();
  struct stat about {};
  if (::stat(path.c_str(), &about) != 0) {
    on_problem_(path, std::strerror(errno));
  } else if (S_ISDIR(about.st_mode)) {
    find_folder(path, 0);
  } else {
    find_file(path, true);
  }
}

void log_finder::find_folder(const std::string& path, unsigned depth) {
  const auto entries = list(path);
  if (!entries) {
    on_problem_(path, std::strerror(errno));
    return;
  }
  const std::string prefix = path.ends_with('/') ? path : path + "/";
  for (const entry& found : *entries) {
    if (stop_signal() != 0) return;
    if (!found.folder) {
      find_file(prefix + found.name, false);
    } else if (depth < deepest_folder) {
      find_folder(prefix + found.name, depth + 1);
    } else {
      on_problem_(prefix + found.name, "folders nest too deep");
    }
  }
}

// `named`: by the user, not found below a folder.
void log_finder::find_file(const std::string& path, bool named) {
  const int flags = O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY | (named ? 0 : O_NOFOLLOW);
  const auto file = std::make_shared<const open_file>(::open(path.c_str(), flags));
  const int descriptor = file->descriptor();
  struct stat about {};
  if (descriptor < 0 || ::fstat(descriptor, &about) != 0) {
    on_problem_(path, std::strerror(errno));
    return;
  }
  if (!S_ISREG(about.st_mode) && !S_ISBLK(about.st_mode)) {
    if (named) on_problem_(path, "not a file");
    return;
  }
  // A device has no size of its own.
  const std::uint64_t size =
      S_ISBLK(about.st_mode) ? end_of(descriptor) : static_cast<std::uint64_t>(about.st_size);
  std::byte head[log_start_bytes];
  const ssize_t got = read_fully(descriptor, head, 0);
  if (got < 0) {
    on_problem_(path, std::strerror(errno));
    return;
  }
  const auto start = std::span<const std::byte>(head, static_cast<std::size_t>(got));
  const auto kind = log_kind_of(start);
  if (!kind) {
    std::byte tail[512];
    const bool has_tail =
        size >= sizeof tail && read_fully(descriptor, tail, size - sizeof tail) == std::ssize(tail);
    const auto image = image_kind_of(
        start, has_tail ? std::span<const std::byte>(tail) : std::span<const std::byte>());
    if (image &&
        find_in_image(path, *image, {path, "", log_kind::evtx, about.st_dev, about.st_ino})) {
      return;
    }
  }
  if ((!kind && carve_ == carve_what::nothing) || carve_ == carve_what::free_space) {
    const bool of_image = carve_ == carve_what::free_space;
    if (named) on_problem_(path, of_image ? "not a disk image" : "not an event log");
    return;
  }
  found_log log;
  log.source = {path, "", kind.value_or(log_kind::evtx), about.st_dev, about.st_ino};
  log.file = file;
  log.descriptor = descriptor;
  log.size = size;
  log.carve = carve_ != carve_what::nothing;
  on_log_(log);
}

// Hands on what an image has. False when its bytes are wanted, and are those of the file.
bool log_finder::find_in_image(const std::string& path, image_kind kind, const log_source& file) {
  // The parts of a split image have the names that the library looks for.
  const bool is_split = path.ends_with(".001");
  if (carve_ == carve_what::everything && kind == image_kind::raw && !is_split) return false;
  const image_use use = carve_ == carve_what::nothing      ? image_use::logs
                        : carve_ == carve_what::everything ? image_use::bytes
                                                           : image_use::free_space;
  disk_image image;
  std::string problem;
  if (!image.open(path, kind, use, problem)) {
    on_problem_(path, problem);
    return true;
  }
  for (std::uint32_t number = 0;; ++number) {
    const auto item = image.at(number);
    if (!item || stop_signal() != 0) break;
    const std::string name = item->path.empty() ? path : path + ":" + item->path;
    if (item->what == image_item::problem) {
      on_problem_(name, item->problem);
      continue;
    }
    found_log log;
    log.source = file;
    log.source.path = name;
    log.image = path;
    log.source.kind = item->is_legacy != 0 ? log_kind::evt : log_kind::evtx;
    log.source.deleted = item->is_deleted != 0;
    log.size = item->size;
    log.modified = item->modified;
    log.carve = use != image_use::logs;
    log.read_at = [&image, number](std::span<std::byte> buffer, std::uint64_t offset) {
      return image.read(number, buffer, offset);
    };
    if (item->what == image_item::volume) {
      for (const image_extent& each : image.extents(number)) {
        log.parts.emplace_back(each.offset, each.size);
      }
      if (log.parts.empty()) continue;
    }
    on_log_(log);
  }
  if (!image.stopped().empty() && stop_signal() == 0) on_problem_(path, image.stopped());
  return true;
}

void log_finder::find_stream() {
  found_log log;
  log.head.resize(log_start_bytes);
  const ssize_t got = read_fully(STDIN_FILENO, log.head);
  if (got < 0) {
    if (stop_signal() == 0) on_problem_("-", std::strerror(errno));
    return;
  }
  log.head.resize(static_cast<std::size_t>(got));
  const auto kind = log_kind_of(log.head);
  if (!kind && carve_ != carve_what::everything) {
    on_problem_("-", "not an event log");
    return;
  }
  identify_standard_input(log.source);
  log.source.path = "-";
  log.source.kind = kind.value_or(log_kind::evtx);
  log.carve = carve_ != carve_what::nothing;
  log.descriptor = STDIN_FILENO;
  log.is_stream = true;
  on_log_(log);
}

}  // namespace zanvik
