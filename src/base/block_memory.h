// Memory for one block of a file, of a size that the file chose. Failing to get it is an answer,
// never an exception, and pages that are not written to cost nothing.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>

namespace zanvik::uni {

class block_memory {
 public:
  // `bytes()` has this size, or is empty if memory ran out.
  explicit block_memory(std::uint64_t size);
  block_memory(const block_memory&) = delete;
  block_memory& operator=(const block_memory&) = delete;
  ~block_memory();

  std::span<std::byte> bytes() const { return bytes_; }
  // All bytes are zero at the start.
  bool zeroed() const { return mapped_; }

 private:
  std::unique_ptr<std::byte[]> owned_;
  std::span<std::byte> bytes_;
  bool mapped_ = false;
};

}  // namespace zanvik::uni
