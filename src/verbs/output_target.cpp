#include "verbs/output_target.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>

namespace zanvik {

output_target::~output_target() {
  if (descriptor_ != STDOUT_FILENO && descriptor_ >= 0) ::close(descriptor_);
  if (!temporary_.empty()) ::unlink(temporary_.c_str());
}

bool output_target::open(const std::string& path, std::string& problem) {
  if (path.empty() || path == "-") return true;
  path_ = path;
  struct stat about {};
  const bool there = ::stat(path.c_str(), &about) == 0;
  std::string name = path;
  int flags = O_WRONLY | O_CLOEXEC;
  // A device or a pipe is written as it is.
  if (!there || S_ISREG(about.st_mode)) {
    name += ".part-" + std::to_string(::getpid());
    flags |= O_CREAT | O_EXCL;
  }
  descriptor_ = ::open(name.c_str(), flags, 0666);
  if (descriptor_ < 0) {
    problem = std::strerror(errno);
    return false;
  }
  if (flags & O_CREAT) temporary_ = name;
  return true;
}

bool output_target::keep(std::string& problem) {
  if (temporary_.empty()) return true;
  if (::rename(temporary_.c_str(), path_.c_str()) != 0) {
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
