// File access of the program: 64-bit offsets, no call that can block, no exception.
//
// A path is a byte string that has to be UTF-8; others cannot be opened. A FIFO or a socket is
// refused. A directory opens where the system allows it, and has no bytes. Only reading tells what
// a file contains: one that shrinks, or has unreadable parts, gives what can be read. Calls that a
// signal interrupts are repeated.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace zanvik::uni {

enum class open_mode {
  read,     // an existing file, to be read
  update,   // an existing file, to be read and written
  replace,  // created, or emptied if it exists
};

// Called with the bytes of a block and their offset in the file; false ends the walk. The callee
// may change the bytes; they live until it returns.
using block_callback = std::function<bool(std::span<std::byte>, std::uint64_t)>;

class fileio {
 public:
  fileio() = default;
  fileio(const fileio&) = delete;
  fileio& operator=(const fileio&) = delete;
  ~fileio() { close(); }

  // Opens `path` without its trailing `/` and `\`; an open file is closed first.
  [[nodiscard]] bool open(std::string_view path, open_mode mode = open_mode::read);
  void close();
  bool is_open() const { return fd_ != -1; }
  // The open file's descriptor, which this object owns; -1 if closed.
  int descriptor() const { return fd_; }
  const std::string& path() const { return path_; }

  // Size in bytes when it was opened.
  std::uint64_t get_size() const { return size_; }

  // Reads up to `count` bytes at `offset` into `out`; none for a directory. Returns false, with
  // `out` empty, if `offset` is at or past the size, or memory runs out.
  [[nodiscard]] bool read(std::vector<std::byte>& out, std::uint64_t count, std::uint64_t offset);

  // The same into the caller's buffer; sets `count` to the bytes read.
  [[nodiscard]] bool read_raw(std::span<std::byte> buffer, std::size_t& count,
                              std::uint64_t offset);

  // Reads the file from `start_offset` to its end in blocks of `block_size`, the last one shorter,
  // into one buffer, and passes each to `callback`, except blocks in a hole of the file. An
  // unreadable part costs the rest of its block. Returns false if there is nothing at
  // `start_offset`, if memory for a block runs out, or if the callback returned false.
  [[nodiscard]] bool walk_blocks(std::uint64_t block_size, std::uint64_t start_offset,
                                 const block_callback& callback);

  // A block of such a walk. Reading it may lead to fewer bytes, or none.
  struct block {
    std::uint64_t offset = 0;
    std::size_t size = 0;
  };
  // The first block of this size at `offset` or behind a hole there; nothing at the end.
  [[nodiscard]] std::optional<block> next_block(std::size_t block_size, std::uint64_t offset) const;
  // Reads a block, for any thread; returns the bytes read.
  std::size_t read_block(std::span<std::byte> buffer, std::uint64_t offset) const;

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

// Reads at most `limit` bytes from the start of the file at `path`. Returns false, with `buffer`
// empty, if the file cannot be opened or has no bytes.
[[nodiscard]] bool read_file_head(std::vector<std::byte>& buffer, std::string_view path,
                                  std::size_t limit);

}  // namespace zanvik::uni
