#include "base/fileio.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <new>
#include <stdexcept>

#include "base/block_memory.h"
#include "base/utf16.h"

namespace zanvik::uni {
namespace {

constexpr std::size_t max_read_call = 0x10000000;    // below what one call can return
constexpr std::uint64_t kernel_file_size = 0x40000;  // assumed if the kernel gives no length
constexpr std::size_t growth_step = std::size_t{16} << 20;

int open_flags(open_mode mode) {
  // Without O_NONBLOCK the open of a FIFO would wait for its other end.
  const int common = O_NONBLOCK | O_CLOEXEC | O_NOCTTY;
  if (mode == open_mode::read) return common | O_RDONLY;
  if (mode == open_mode::update) return common | O_RDWR;
  return common | O_RDWR | O_CREAT | O_TRUNC;
}

// The kinds of file that deliver bytes only when somebody sends some.
bool is_channel(const struct stat& status) {
  return S_ISFIFO(status.st_mode) || S_ISSOCK(status.st_mode);
}

// Fewer blocks than bytes suggest holes; a file system that packs its files shows this too.
bool may_have_holes(const struct stat& status) {
  constexpr std::uint64_t block_bytes = 512;  // whatever the file system's own block size
  return !S_ISREG(status.st_mode) || static_cast<std::uint64_t>(status.st_blocks) * block_bytes <
                                         static_cast<std::uint64_t>(status.st_size);
}

// The first extent of data in [from, end), empty at `end` if there is none. If the file system
// cannot tell, all is data.
struct extent {
  std::uint64_t begin = 0;
  std::uint64_t end = 0;
};
extent next_data(int descriptor, std::uint64_t from, std::uint64_t end) {
  const off_t data = ::lseek(descriptor, static_cast<off_t>(from), SEEK_DATA);
  if (data < 0) return errno == ENXIO ? extent{end, end} : extent{from, end};
  const std::uint64_t begin = std::min(static_cast<std::uint64_t>(data), end);
  const off_t hole = ::lseek(descriptor, data, SEEK_HOLE);
  return {begin, hole < 0 ? end : std::min(static_cast<std::uint64_t>(hole), end)};
}

}  // namespace

bool fileio::open(std::string_view path, open_mode mode) {
  close();
  const std::size_t last = path.find_last_not_of("/\\");
  path = last == std::string_view::npos ? std::string_view() : path.substr(0, last + 1);
  if (!is_strict_utf8(path)) return false;  // an empty text is not UTF-8 either
  path_ = path;
  const mode_t permissions = mode == open_mode::read ? 0404 : 0606;
  do {
    fd_ = ::open(path_.c_str(), open_flags(mode), permissions);
  } while (fd_ == -1 && errno == EINTR);
  struct stat status = {};
  if (fd_ == -1 || ::fstat(fd_, &status) != 0 || is_channel(status)) {
    close();
    return false;
  }
  const bool size_is_known = S_ISREG(status.st_mode) && status.st_size > 0;
  size_ = size_is_known ? static_cast<std::uint64_t>(status.st_size) : measure();
  may_have_holes_ = may_have_holes(status);
  return true;
}

void fileio::close() {
  if (fd_ != -1) ::close(fd_);
  fd_ = -1;
  size_ = 0;
  path_.clear();
}

std::uint64_t fileio::measure() const {
  const off_t end = ::lseek(fd_, 0, SEEK_END);
  if (end < 0) return errno == EINVAL && path_.starts_with("/proc") ? kernel_file_size : 0;
  ::lseek(fd_, 0, SEEK_SET);
  return static_cast<std::uint64_t>(end);
}

fileio::read_end fileio::read_at(std::span<std::byte> buffer, std::size_t& count,
                                 std::uint64_t offset) const {
  count = 0;
  while (count < buffer.size()) {
    const std::size_t wanted = std::min(buffer.size() - count, max_read_call);
    const ssize_t got =
        ::pread(fd_, buffer.data() + count, wanted, static_cast<off_t>(offset + count));
    if (got < 0 && errno == EINTR) continue;
    if (got < 0) return read_end::error;
    if (got == 0) return read_end::end_of_file;
    count += static_cast<std::size_t>(got);
  }
  return read_end::full;
}

bool fileio::read(std::vector<std::byte>& out, std::uint64_t count, std::uint64_t offset) {
  out.clear();
  if (!is_open() || offset >= size_) return false;
  std::uint64_t left = std::min(count, size_ - offset);
  try {
    // In steps, because the size of a file with holes says little about its content.
    for (auto end = read_end::full; left > 0 && end == read_end::full;) {
      const std::size_t start = out.size();
      out.resize(start + static_cast<std::size_t>(std::min<std::uint64_t>(left, growth_step)));
      std::size_t got = 0;
      end = read_at(std::span(out).subspan(start), got, offset + start);
      out.resize(start + got);
      left -= got;
    }
  } catch (const std::bad_alloc&) {
    out.clear();
    return false;
  } catch (const std::length_error&) {
    out.clear();
    return false;
  }
  return true;
}

bool fileio::read_raw(std::span<std::byte> buffer, std::size_t& count, std::uint64_t offset) {
  const std::uint64_t wanted = std::min(count, buffer.size());
  count = 0;
  if (!is_open() || offset >= size_) return false;
  const auto room = static_cast<std::size_t>(std::min<std::uint64_t>(wanted, size_ - offset));
  read_at(buffer.first(room), count, offset);
  return true;
}

fileio::read_end fileio::read_extents(std::span<std::byte> buffer, std::size_t& count,
                                      std::uint64_t offset) const {
  const std::uint64_t end = offset + buffer.size();
  for (std::uint64_t at = offset; at < end;) {
    const extent data = next_data(fd_, at, end);
    const auto skipped = static_cast<std::size_t>(data.begin - offset);
    std::size_t got = 0;
    const auto length = static_cast<std::size_t>(data.end - data.begin);
    const read_end result = read_at(buffer.subspan(skipped, length), got, data.begin);
    count = skipped + got;
    if (result != read_end::full) return result;
    at = data.end;
  }
  return read_end::full;
}

bool fileio::walk_blocks(std::uint64_t block_size, std::uint64_t start_offset,
                         const block_callback& callback) {
  if (!is_open() || start_offset >= size_ || block_size == 0) return false;
  const block_memory memory(std::min(block_size, size_ - start_offset));
  const std::span<std::byte> buffer = memory.bytes();
  if (buffer.empty()) return false;
  if (size_ - start_offset > buffer.size()) ::posix_fadvise(fd_, 0, 0, POSIX_FADV_SEQUENTIAL);
  for (auto next = next_block(buffer.size(), start_offset); next;
       next = next_block(buffer.size(), next->offset + next->size)) {
    const std::span<std::byte> bytes = buffer.first(next->size);
    std::size_t count = 0;
    const bool fresh = memory.zeroed() && next->offset == start_offset;
    const read_end end =
        fresh ? read_extents(bytes, count, next->offset) : read_at(bytes, count, next->offset);
    if (count > 0 && !callback(bytes.first(count), next->offset)) return false;
    if (end == read_end::end_of_file) break;
  }
  return true;
}

std::optional<fileio::block> fileio::next_block(std::size_t block_size,
                                                std::uint64_t offset) const {
  if (!is_open() || offset >= size_ || block_size == 0) return std::nullopt;
  // A block that is only a hole contains no record, and there may be any number of them.
  const std::uint64_t hole = may_have_holes_ ? next_data(fd_, offset, size_).begin - offset : 0;
  offset += hole - hole % block_size;
  if (offset >= size_) return std::nullopt;
  return block{offset,
               static_cast<std::size_t>(std::min<std::uint64_t>(block_size, size_ - offset))};
}

std::size_t fileio::read_block(std::span<std::byte> buffer, std::uint64_t offset) const {
  std::size_t count = 0;
  (void)read_at(buffer, count, offset);
  return count;
}

bool read_file_head(std::vector<std::byte>& buffer, std::string_view path, std::size_t limit) {
  fileio file;
  buffer.clear();
  return file.open(path) && file.read(buffer, limit, 0) && !buffer.empty();
}

}  // namespace zanvik::uni
