#include "verbs/output_target.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>

namespace zanvik {
namespace {

constexpr const char* own_files = "/proc/self/fd";

}  // namespace

output_target::~output_target() {
  if (descriptor_ != STDOUT_FILENO && descriptor_ >= 0) ::close(descriptor_);
  if (!temporary_.empty() && !unnamed_) ::unlink(temporary_.c_str());
}

bool output_target::open(const std::string& path, std::string& problem) {
  if (path.empty() || path == "-") return true;
  path_ = path;
  struct stat about {};
  const bool there = ::stat(path.c_str(), &about) == 0;
  if (there && !S_ISREG(about.st_mode)) {  // a device or a pipe is written as it is
    descriptor_ = ::open(path.c_str(), O_WRONLY | O_CLOEXEC);
  } else {
    // A link stays, and what it leads to is replaced.
    const std::unique_ptr<char, void (*)(void*)> target(::realpath(path.c_str(), nullptr), ::free);
    if (target) path_ = target.get();
    open_beside();
  }
  if (descriptor_ < 0) problem = std::strerror(errno);
  return descriptor_ >= 0;
}

// A file without a name goes by itself when the run dies, however it dies. Not all file systems
// have such files.
void output_target::open_beside() {
  const std::size_t slash = path_.rfind('/');
  const std::string folder = slash == std::string::npos ? "." : path_.substr(0, slash + 1);
  temporary_ = path_ + ".part-" + std::to_string(::getpid());
#ifdef O_TMPFILE
  if (::access(own_files, X_OK) == 0) {
    descriptor_ = ::open(folder.c_str(), O_TMPFILE | O_WRONLY | O_CLOEXEC, 0666);
    unnamed_ = descriptor_ >= 0;
  }
#endif
  if (unnamed_) return;
  descriptor_ = ::open(temporary_.c_str(), O_WRONLY | O_CLOEXEC | O_CREAT | O_EXCL, 0666);
  if (descriptor_ < 0) temporary_.clear();
}

bool output_target::keep(std::string& problem) {
  if (temporary_.empty()) return true;
  bool kept = true;
  if (unnamed_) {
    const std::string file = own_files + std::string("/") + std::to_string(descriptor_);
    kept = ::linkat(AT_FDCWD, file.c_str(), AT_FDCWD, temporary_.c_str(), AT_SYMLINK_FOLLOW) == 0;
  }
  if (kept) unnamed_ = false;
  kept = kept && ::rename(temporary_.c_str(), path_.c_str()) == 0;
  if (!kept) {
    problem = std::strerror(errno);
    return false;
  }
  temporary_.clear();
  return true;
}

bool is_same_file(const std::string& path, const log_source& log) {
  struct stat about {};
  return !path.empty() && path != "-" && log.inode != 0 && ::stat(path.c_str(), &about) == 0 &&
         about.st_dev == log.device && about.st_ino == log.inode;
}

}  // namespace zanvik
