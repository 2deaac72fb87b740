#include "verbs/output_target.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>

#include "verbs/log_options.h"
#include "verbs/verbs.h"

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
    if (there && descriptor_ >= 0) keep_rights(about);
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

// Who may read the old file may read the new one. Only root can give a file away; without its owner
// it gets no right that the old one gave to owner or group alone.
void output_target::keep_rights(const struct stat& old) {
  constexpr mode_t all = S_IRWXU | S_IRWXG | S_IRWXO;
  const bool owned = ::fchown(descriptor_, old.st_uid, old.st_gid) == 0;
  const bool grouped = owned || ::fchown(descriptor_, static_cast<uid_t>(-1), old.st_gid) == 0;
  (void)::fchmod(descriptor_, old.st_mode & (grouped ? all : all & ~mode_t{S_IRWXG}));
}

bool output_target::keep(std::string& problem, bool whole) {
  if (temporary_.empty()) return true;
  if (!whole) path_ += ".incomplete";
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

int finish_run(output_target& target, bool written, int stopped_by, int status) {
  std::string problem;
  if (written && !target.keep(problem, stopped_by == 0)) {
    report_problem(target.name(), problem);
    status = verb_problems;
  }
  if (stopped_by == 0) return status;
  const char* const name = stopped_by == SIGINT ? "SIGINT" : "SIGTERM";
  const std::string where = target.name().empty() ? "the output" : target.name();
  report_problem(where, std::string("stopped by ") + name + "; the results end here");
  return verb_stopped + stopped_by;
}

bool is_same_file(const std::string& path, const log_source& log) {
  struct stat about {};
  return !path.empty() && path != "-" && log.inode != 0 && ::stat(path.c_str(), &about) == 0 &&
         about.st_dev == log.device && about.st_ino == log.inode;
}

}  // namespace zanvik
