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

#include "base/byte_cursor.h"
#include "evt/evt_record.h"
#include "evtx/container/chunk.h"
#include "source/block_reader.h"

namespace zanvik {
namespace {

constexpr unsigned deepest_folder = 200;  // a path of that many names is longer than the system's
constexpr std::size_t head_bytes = evtx_layout::file_header_bytes + 8;

// The kind of log that begins with `head`. A log that has lost its file header shows by its first
// chunk.
std::optional<log_kind> kind_of(std::span<const std::byte> head) {
  const byte_cursor bytes(head);
  const auto first = bytes.at_or_zero<std::uint64_t>(0);
  if (first == evtx_layout::file_signature || first == evtx_layout::chunk_signature ||
      bytes.at<std::uint64_t>(evtx_layout::file_header_bytes) == evtx_layout::chunk_signature) {
    return log_kind::evtx;
  }
  if (bytes.at<std::uint32_t>(evt_layout::signature_at) == evt_layout::signature) {
    return log_kind::evt;
  }
  return std::nullopt;
}

class descriptor {
 public:
  explicit descriptor(int fd) : fd_(fd) {}
  descriptor(const descriptor&) = delete;
  descriptor& operator=(const descriptor&) = delete;
  ~descriptor() {
    if (fd_ >= 0) ::close(fd_);
  }
  int get() const { return fd_; }

 private:
  int fd_;
};

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

void identify_standard_input(log_source& source) {
  struct stat about {};
  if (::fstat(STDIN_FILENO, &about) != 0 || !S_ISREG(about.st_mode)) return;
  source.device = about.st_dev;
  source.inode = about.st_ino;
}

void log_finder::find(const std::string& path) {
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
  const descriptor file(::open(path.c_str(), flags));
  struct stat about {};
  if (file.get() < 0 || ::fstat(file.get(), &about) != 0) {
    on_problem_(path, std::strerror(errno));
    return;
  }
  if (!S_ISREG(about.st_mode) && !S_ISBLK(about.st_mode)) {
    if (named) on_problem_(path, "not a file");
    return;
  }
  std::byte head[head_bytes];
  const ssize_t got = read_fully(file.get(), head, 0);
  if (got < 0) {
    on_problem_(path, std::strerror(errno));
    return;
  }
  const auto kind = kind_of(std::span(head, static_cast<std::size_t>(got)));
  if (!kind && !carve_) {
    if (named) on_problem_(path, "not an event log");
    return;
  }
  found_log log;
  log.source = {path, kind.value_or(log_kind::evtx), about.st_dev, about.st_ino};
  log.descriptor = file.get();
  log.size = static_cast<std::uint64_t>(about.st_size);
  // A device has no size of its own.
  if (S_ISBLK(about.st_mode)) log.size = end_of(file.get());
  log.carve = carve_;
  on_log_(log);
}

void log_finder::find_stream() {
  found_log log;
  log.head.resize(head_bytes);
  const ssize_t got = read_fully(STDIN_FILENO, log.head);
  if (got < 0) {
    on_problem_("-", std::strerror(errno));
    return;
  }
  log.head.resize(static_cast<std::size_t>(got));
  const auto kind = kind_of(log.head);
  if (!kind && !carve_) {
    on_problem_("-", "not an event log");
    return;
  }
  identify_standard_input(log.source);
  log.source.path = "-";
  log.source.kind = kind.value_or(log_kind::evtx);
  log.carve = carve_;
  log.descriptor = STDIN_FILENO;
  log.is_stream = true;
  on_log_(log);
}

}  // namespace zanvik
