// Volume shadow copies, by libvshadow. The only file that knows that library.
//
// In: a volume, by a function that reads it. Out: its copies, each as a volume again.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <span>
#include <string>
#include <vector>

namespace zanvik {

// Like pread.
using volume_read = std::function<std::int64_t(std::span<std::byte> buffer, std::uint64_t offset)>;

class shadow_copies {
 public:
  shadow_copies();
  ~shadow_copies();

  // False when the volume has none; `problem` is set when it has some that cannot be read.
  [[nodiscard]] bool open(volume_read read, std::uint64_t size, std::string& problem);

  std::size_t count() const;
  std::uint64_t size(std::size_t copy) const;
  std::int64_t read(std::size_t copy, std::span<std::byte> buffer, std::uint64_t offset);

 private:
  struct library;
  std::unique_ptr<library> library_;
};

}  // namespace zanvik
