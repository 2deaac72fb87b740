#include "source/record_runs.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <string>

#include "base/limits.h"
#include "source/block_reader.h"

namespace zanvik {
namespace {

// A file that goes with its descriptor; -1 when it cannot be made.
int open_nameless_file() {
  const char* const folder = std::getenv("TMPDIR");
  std::string path = std::string(folder && *folder ? folder : "/tmp") + "/zanvik.XXXXXX";
  const int file = ::mkostemp(path.data(), O_CLOEXEC);
  if (file >= 0) ::unlink(path.c_str());
  return file;
}

bool write_fully(int file, std::span<const std::byte> bytes, std::uint64_t offset) {
  while (!bytes.empty()) {
    const ssize_t done = ::pwrite(file, bytes.data(), bytes.size(), static_cast<off_t>(offset));
    if (done < 0 && errno == EINTR) continue;
    if (done <= 0) return false;
    offset += static_cast<std::uint64_t>(done);
    bytes = bytes.subspan(static_cast<std::size_t>(done));
  }
  return true;
}

}  // namespace

run_store::~run_store() {
  if (file_ >= 0) ::close(file_);
}

bool run_store::add(const record_run& run, std::span<const std::byte> bytes) {
  if (memory_.size() + bytes.size() > limits::carved_bytes_in_memory && !flush()) return false;
  const auto head = std::as_bytes(std::span(&run, 1));
  memory_.insert(memory_.end(), head.begin(), head.end());
  memory_.insert(memory_.end(), bytes.begin(), bytes.end());
  return true;
}

bool run_store::flush() {
  if (file_ < 0) file_ = open_nameless_file();
  if (file_ < 0 || !write_fully(file_, memory_, in_file_)) return false;
  in_file_ += memory_.size();
  memory_.clear();
  return true;
}

bool run_store::for_each(const run_use& use) {
  std::vector<std::byte> bytes;
  record_run run;
  for (std::uint64_t at = 0; at < in_file_;) {
    const auto head = std::as_writable_bytes(std::span(&run, 1));
    if (read_fully(file_, head, at) != std::ssize(head)) return false;
    bytes.resize(run.size);
    if (read_fully(file_, bytes, at + head.size()) != std::ssize(bytes)) return false;
    use(run, bytes);
    at += head.size() + bytes.size();
  }
  for (std::size_t at = 0; at < memory_.size();) {
    std::memcpy(&run, memory_.data() + at, sizeof run);
    use(run, std::span(memory_).subspan(at + sizeof run, run.size));
    at += sizeof run + run.size;
  }
  return true;
}

}  // namespace zanvik
