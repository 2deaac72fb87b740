// An open log: its file, and its first bytes, read as far as they were needed. It is opened to be
// classified and stays open for the runs that read it.
#pragma once

#include <array>
#include <cstddef>
#include <span>
#include <string>

#include "base/fileio.h"
#include "evtx/container/chunk.h"

namespace zanvik {

class log_file {
 public:
  // False if the file cannot be opened or has no bytes. The previous file is closed.
  [[nodiscard]] bool open(const std::string& path);
  bool is_open(const std::string& path) const { return file_.is_open() && path == path_; }
  uni::fileio& file() { return file_; }

  // The first `count` bytes, at most `most_bytes`; fewer if the file has no more.
  std::span<const std::byte> first(std::size_t count);
  // All bytes, for the caller to keep and to change, if they have all been read; otherwise none.
  // They are valid until the next call of any function here.
  std::span<std::byte> take_all();

  // A file header and one chunk, which is the whole of many logs.
  static constexpr std::size_t most_bytes =
      evtx_layout::file_header_bytes + evtx_layout::chunk_bytes;

 private:
  uni::fileio file_;
  std::string path_;
  std::size_t read_ = 0;
  std::array<std::byte, most_bytes> bytes_;  // set as far as `read_`
};

}  // namespace zanvik
