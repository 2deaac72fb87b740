#include "pipeline/temporary_file.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <utility>

namespace zanvik {

bool temporary_file::create(const std::string& folder) {
  close();
  folder_ = folder;
  if (folder_.empty()) {
    const char* const usual = std::getenv("TMPDIR");
    folder_ = usual != nullptr && *usual != '\0' ? usual : "/tmp";
  }
  descriptor_ = ::open(folder_.c_str(), O_TMPFILE | O_RDWR | O_CLOEXEC, 0600);
  // Not every file system has files without a name.
  if (descriptor_ < 0 && (errno == EOPNOTSUPP || errno == EISDIR || errno == EINVAL)) {
    std::string name = folder_ + "/zanvik-XXXXXX";
    descriptor_ = ::mkostemp(name.data(), O_CLOEXEC);
    if (descriptor_ >= 0) ::unlink(name.c_str());
  }
  return descriptor_ >= 0 || fail(errno);
}

void temporary_file::close() {
  if (descriptor_ >= 0) ::close(descriptor_);
  descriptor_ = -1;
  size_ = 0;
  error_.clear();
}

void temporary_file::swap(temporary_file& other) {
  std::swap(descriptor_, other.descriptor_);
  std::swap(size_, other.size_);
  std::swap(folder_, other.folder_);
  std::swap(error_, other.error_);
}

bool temporary_file::append(std::string_view bytes) {
  if (!error_.empty()) return false;
  while (!bytes.empty()) {
    const ssize_t written =
        ::pwrite(descriptor_, bytes.data(), bytes.size(), static_cast<off_t>(size_));
    if (written < 0 && errno == EINTR) continue;
    if (written <= 0) return fail(written < 0 ? errno : ENOSPC);
    size_ += static_cast<std::uint64_t>(written);
    bytes.remove_prefix(static_cast<std::size_t>(written));
  }
  return true;
}

bool temporary_file::read(std::uint64_t offset, std::span<char> bytes) {
  while (!bytes.empty()) {
    const ssize_t got =
        ::pread(descriptor_, bytes.data(), bytes.size(), static_cast<off_t>(offset));
    if (got < 0 && errno == EINTR) continue;
    if (got <= 0) return fail(got < 0 ? errno : EIO);
    offset += static_cast<std::uint64_t>(got);
    bytes = bytes.subspan(static_cast<std::size_t>(got));
  }
  return true;
}

bool temporary_file::fail(int error) {
  if (error_.empty()) error_ = "temporary file in " + folder_ + ": " + std::strerror(error);
  return false;
}

}  // namespace zanvik
