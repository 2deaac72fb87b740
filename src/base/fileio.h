// File access of the program: 64-bit offsets, no call that can block, no exception.
//
// A path is a byte string that has to be UTF-8; another one cannot be opened. A FIFO and a socket
// are refused. A directory opens where the system allows it, and then yields no bytes. What a file
// holds is only known by reading: one that shrinks, or that has unreadable places, gives what can
// be read. Calls that a signal interrupts are repeated.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace zanvik::uni {

enum class open_mode {
  read,     // an existing file, to be read
  update,   // an existing file, to be read and written
  replace,  // made if there is none, emptied if there is one
};

// Called with the bytes of a block and their offset in the file; false ends the walk. The bytes
// may be changed by the callee and live until it returns.
using block_callback = std::function<bool(std::span<std::byte>, std::uint64_t)>;

class fileio {
 public:
  fileio() = default;
  fileio(const fileio&) = delete;
  fileio& operator=(const fileio&) = delete;
  ~fileio() { close(); }

  // Opens `path`, less its trailing `/` and `\`; a file that was open is closed first.
  [[nodiscard]] bool open(std::string_view path, open_mode mode = open_mode::read);
  void close();
  bool is_open() const { return fd_ != -1; }
  // The open file's descriptor, which stays this object's; -1 when closed.
  int descriptor() const { return fd_; }
  const std::string& path() const { return path_; }

  // Size in bytes as it was at the opening.
  std::uint64_t get_size() const { return size_; }

  // Reads up to `count` bytes at `offset`; `out` gets those that were read, none for a directory.
  // Returns false, with `out` empty, when `offset` is at or beyond the size or memory runs out.
  [[nodiscard]] bool read(std::vector<std::byte>& out, std::uint64_t count, std::uint64_t offset);

  // The same into the caller's buffer; `count` becomes what was read.
  [[nodiscard]] bool read_raw(std::span<std::byte> buffer, std::size_t& count,
                              std::uint64_t offset);

  // Reads the file from `start_offset` to its end in blocks of `block_size`, the last one shorter,
  // into one buffer, and hands each to `callback`, but for those that lie in a hole of the file. A
  // place that cannot be read costs the rest of its block. Returns false when there is nothing at
  // `start_offset`, when memory for a block cannot be had, or when the callback returned false.
  [[nodiscard]] bool walk_blocks(std::uint64_t block_size, std::uint64_t start_offset,
                                 const block_callback& callback);

 private:
  enum class read_end { full, end_of_file, error };
  read_end read_at(std::span<std::byte> buffer, std::size_t& count, std::uint64_t offset) const;
  // The same for a buffer of zeros: holes of the file are not read, so they take no memory.
  read_end read_extents(std::span<std::byte> buffer, std::size_t& count,
                        std::uint64_t offset) const;
  std::uint64_t measure() const;

  int fd_ = -1;
  std::uint64_t size_ = 0;
  bool may_have_holes_ = true;
  std::string path_;
};

// Reads the first bytes of the file at `path`, `limit` of them at the most. Returns false, with
// `buffer` empty, when the file cannot be opened or gives no byte.
[[nodiscard]] bool read_file_head(std::vector<std::byte>& buffer, std::string_view path,
                                  std::size_t limit);

}  // namespace zanvik::uni
