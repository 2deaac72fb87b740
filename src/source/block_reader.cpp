#include "source/block_reader.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <vector>

#include "base/byte_cursor.h"
#include "base/stop_signal.h"
#include "evtx/evtx.h"

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
    } else if (errno != EINTR || stop_signal() != 0) {
      if (done == 0) return -1;
      break;
    }
  }
  return static_cast<ssize_t>(done);
}

// Where the data at or behind `offset` begin; the end of the file when there are none.
std::uint64_t next_data(const found_log& log, std::uint64_t offset) {
  if (log.read_at) return offset;
  const off_t found = ::lseek(log.descriptor, static_cast<off_t>(offset), SEEK_DATA);
  if (found >= 0) return static_cast<std::uint64_t>(found);
  return errno == ENXIO ? log.size : offset;
}

void read_stream(const found_log& log, std::uint64_t offset, std::size_t block_bytes,
                 const block_room& room, const owned_block_use& use) {
  // The head has been read; it is longer than what stands before the first block.
  std::size_t held = log.head.size() > offset ? log.head.size() - offset : 0;
  for (bool more = true; more && stop_signal() == 0; held = 0) {
    std::vector<std::byte> block = room();
    block.resize(block_bytes);
    if (held != 0) {
      std::copy(log.head.end() - static_cast<std::ptrdiff_t>(held), log.head.end(), block.begin());
    }
    const ssize_t got = read_fully(log.descriptor, std::span(block).subspan(held));
    const std::size_t bytes = held + static_cast<std::size_t>(std::max<ssize_t>(got, 0));
    more = got >= 0 && bytes == block_bytes;
    if ((bytes != 0 || got < 0) && !use(std::move(block), offset, bytes, got < 0)) return;
    offset += bytes;
  }
}

// Holes shorter than this are read.
constexpr std::uint64_t least_hole_bytes = 1 << 20;

}  // namespace

ssize_t read_fully(int descriptor, std::span<std::byte> buffer) {
  return read_with(buffer, [descriptor](std::span<std::byte> rest, std::size_t) -> ssize_t {
    if (stop_signal() != 0) {  // a stream may bring nothing more
      errno = EINTR;
      return -1;
    }
    return ::read(descriptor, rest.data(), rest.size());
  });
}

ssize_t read_fully(int descriptor, std::span<std::byte> buffer, std::uint64_t offset) {
  return read_with(buffer, [descriptor, offset](std::span<std::byte> rest, std::size_t done) {
    return ::pread(descriptor, rest.data(), rest.size(), static_cast<off_t>(offset + done));
  });
}

ssize_t read_fully(const found_log& log, std::span<std::byte> buffer, std::uint64_t offset) {
  if (!log.read_at) return read_fully(log.descriptor, buffer, offset);
  const ssize_t got = log.read_at(buffer, offset);
  return got < 0 ? -1 : std::min(got, std::ssize(buffer));
}

std::uint64_t first_chunk_offset(const found_log& log) {
  std::byte start[8];
  std::span<const std::byte> head = log.head;
  if (!log.is_stream) {
    const ssize_t got = read_fully(log, start, 0);
    head = std::span(start, static_cast<std::size_t>(std::max<ssize_t>(got, 0)));
  }
  const bool bare =
      byte_cursor(head).at<std::uint64_t>(0) == evtx_layout::chunk_signature;
  return bare ? 0 : evtx_layout::file_header_bytes;
}

std::uint64_t next_block(const found_log& log, std::uint64_t offset, std::size_t block_bytes) {
  if (offset >= log.size) return log.size;
  const std::uint64_t data = next_data(log, offset);
  offset += (std::max(data, offset) - offset) / block_bytes * block_bytes;
  return std::min(offset, log.size);
}

void read_blocks_into(const found_log& log, std::uint64_t offset, std::size_t block_bytes,
                      const block_room& room, const owned_block_use& use) {
  if (log.is_stream) return read_stream(log, offset, block_bytes, room, use);
  for (;;) {
    offset = next_block(log, offset, block_bytes);
    if (offset >= log.size || stop_signal() != 0) return;
    const std::size_t wanted = std::min<std::uint64_t>(block_bytes, log.size - offset);
    std::vector<std::byte> block = room();
    block.resize(std::max(block.size(), wanted));
    const ssize_t got = read_fully(log, std::span(block).first(wanted), offset);
    const auto size = static_cast<std::size_t>(std::max<ssize_t>(got, 0));
    if (!use(std::move(block), offset, size, size != wanted)) return;
    offset += wanted;
  }
}

bool read_blocks(const found_log& log, std::uint64_t offset, std::size_t block_bytes,
                 const block_use& use) {
  std::vector<std::byte> spare;
  bool all = true;
  read_blocks_into(
      log, offset, block_bytes, [&] { return std::move(spare); },
      [&](std::vector<std::byte>&& block, std::uint64_t at, std::size_t size, bool unread) {
        if (size != 0) use(std::span(block).first(size), at);
        all = all && !unread;
        spare = std::move(block);
        return true;
      });
  return all;
}

namespace {

using room_use = std::function<std::span<std::byte>(std::uint64_t offset)>;
using count_use = std::function<void(std::size_t bytes)>;

bool read_stream_into(const found_log& log, const room_use& room, const count_use& use) {
  std::uint64_t offset = log.head.size();
  if (!log.head.empty()) {
    std::copy(log.head.begin(), log.head.end(), room(0).begin());
    use(log.head.size());
  }
  for (;;) {
    const std::span<std::byte> buffer = room(offset);
    const ssize_t got = read_fully(log.descriptor, buffer);
    if (stop_signal() != 0) return true;
    if (got < 0) return false;
    use(static_cast<std::size_t>(got));
    if (got < std::ssize(buffer)) return true;
    offset += static_cast<std::uint64_t>(got);
  }
}

bool read_part_into(const found_log& log, std::uint64_t offset, std::uint64_t end,
                    const room_use& room, const count_use& use) {
  bool all = true;
  while (offset < end) {
    const std::uint64_t data = next_data(log, offset);
    if (data >= offset + least_hole_bytes) offset = data;
    if (offset >= end || stop_signal() != 0) break;
    std::span<std::byte> buffer = room(offset);
    buffer = buffer.first(std::min<std::uint64_t>(buffer.size(), end - offset));
    const ssize_t got = read_fully(log, buffer, offset);
    use(static_cast<std::size_t>(std::max<ssize_t>(got, 0)));
    all = all && got == std::ssize(buffer);
    offset += buffer.size();
  }
  return all;
}

}  // namespace

bool read_into(const found_log& log, const room_use& room, const count_use& use) {
  if (log.is_stream) return read_stream_into(log, room, use);
  if (log.parts.empty()) return read_part_into(log, 0, log.size, room, use);
  bool all = true;
  for (const auto& [offset, size] : log.parts) {
    all = read_part_into(log, offset, offset + size, room, use) && all;
  }
  return all;
}

}  // namespace zanvik
