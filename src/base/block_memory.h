// Memory for one block of a file, of a size that the file chose: not having it is an answer, never
// an exception, and what is not written to costs nothing.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>

namespace zanvik::uni {

class block_memory {
 public:
  // `bytes()` is of this size, or empty when it cannot be had.
  explicit block_memory(std::uint64_t size);
  block_memory(const block_memory&) = delete;
  block_memory& operator=(const block_memory&) = delete;
  ~block_memory();

  std::span<std::byte> bytes() const { return bytes_; }
  // All bytes were zero at the start.
  bool zeroed() const { return mapped_; }

 private:
  std::unique_ptr<std::byte[]> owned_;
  std::span<std::byte> bytes_;
  bool mapped_ = false;
};

}  // namespace zanvik::uni
