#include "source/block_reader.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <vector>

namespace zanvik {
namespace {

template <typename F>
ssize_t read_with(std::span<std::byte> buffer, F&& read_some) {
  std::size_t done = 0;
  while (done < buffer.size()) {
    const ssize_t got = read_some(buffer.subspan(done), done);
    if (got > 0) {
      done += static_cast<std::size_t>(got);
    } else if (got == 0) {
      break;
    } else if (errno != EINTR) {
      if (done == 0) return -1;
      break;
    }
  }
  return static_cast<ssize_t>(done);
}

// Where the data at or behind `offset` begin; the end of the file when there are none.
std::uint64_t next_data(const found_log& log, std::uint64_t offset) {
  const off_t found = ::lseek(log.descriptor, static_cast<off_t>(offset), SEEK_DATA);
  if (found >= 0) return static_cast<std::uint64_t>(found);
  return errno == ENXIO ? log.size : offset;
}

bool read_stream(const found_log& log, std::uint64_t offset, std::vector<std::byte>& block,
                 const block_use& use) {
  // The head has been read; it is longer than what stands before the first block.
  std::size_t held = log.head.size() > offset ? log.head.size() - offset : 0;
  std::copy(log.head.end() - static_cast<std::ptrdiff_t>(held), log.head.end(), block.begin());
  for (;;) {
    const ssize_t got = read_fully(log.descriptor, std::span(block).subspan(held));
    const std::size_t bytes = held + static_cast<std::size_t>(std::max<ssize_t>(got, 0));
    if (bytes != 0) use(std::span(block).first(bytes), offset);
    if (got < 0) return false;
    if (bytes < block.size()) return true;
    offset += bytes;
    held = 0;
  }
}

// Holes shorter than this are read.
constexpr std::uint64_t least_hole_bytes = 1 << 20;

}  // namespace

ssize_t read_fully(int descriptor, std::span<std::byte> buffer) {
  return read_with(buffer, [descriptor](std::span<std::byte> rest, std::size_t) {
    return ::read(descriptor, rest.data(), rest.size());
  });
}

ssize_t read_fully(int descriptor, std::span<std::byte> buffer, std::uint64_t offset) {
  return read_with(buffer, [descriptor, offset](std::span<std::byte> rest, std::size_t done) {
    return ::pread(descriptor, rest.data(), rest.size(), static_cast<off_t>(offset + done));
  });
}

bool read_blocks(const found_log& log, std::uint64_t offset, std::size_t block_bytes,
                 const block_use& use) {
  std::vector<std::byte> block(block_bytes);
  if (log.is_stream) return read_stream(log, offset, block, use);
  bool all = true;
  while (offset < log.size) {
    const std::uint64_t data = next_data(log, offset);
    offset += (std::max(data, offset) - offset) / block_bytes * block_bytes;
    if (offset >= log.size) break;
    const std::size_t wanted = std::min<std::uint64_t>(block_bytes, log.size - offset);
    const ssize_t got = read_fully(log.descriptor, std::span(block).first(wanted), offset);
    if (got > 0) use(std::span(block).first(static_cast<std::size_t>(got)), offset);
    all = all && got == static_cast<ssize_t>(wanted);
    offset += wanted;
  }
  return all;
}

bool read_into(const found_log& log,
               const std::function<std::span<std::byte>(std::uint64_t offset)>& room,
               const std::function<void(std::size_t bytes)>& use) {
  std::uint64_t offset = 0;
  if (log.is_stream && !log.head.empty()) {
    std::copy(log.head.begin(), log.head.end(), room(0).begin());
    use(log.head.size());
    offset = log.head.size();
  }
  bool all = true;
  while (log.is_stream || offset < log.size) {
    if (!log.is_stream) {
      const std::uint64_t data = next_data(log, offset);
      if (data >= offset + least_hole_bytes) offset = data;
      if (offset >= log.size) break;
    }
    std::span<std::byte> buffer = room(offset);
    if (!log.is_stream && buffer.size() > log.size - offset) {
      buffer = buffer.first(static_cast<std::size_t>(log.size - offset));
    }
    const ssize_t got = log.is_stream ? read_fully(log.descriptor, buffer)
                                      : read_fully(log.descriptor, buffer, offset);
    const auto bytes = static_cast<std::size_t>(std::max<ssize_t>(got, 0));
    use(bytes);
    if (log.is_stream) {
      if (bytes < buffer.size()) return all && got >= 0;
      offset += bytes;
    } else {
      all = all && bytes == buffer.size();
      offset += buffer.size();
    }
  }
  return all;
}

}  // namespace zanvik
