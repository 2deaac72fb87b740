// Records of .evtx logs that follow one another outside whole chunks, kept until the templates of
// the whole input are known.
//
// In: runs of records as they are found. Out: the same, in the same order, as often as asked. What
// is more than a little is kept in a temporary file without a name.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <span>
#include <vector>

namespace zanvik {

struct record_run {
  static constexpr std::uint32_t no_place = ~std::uint32_t{0};

  std::uint64_t offset = 0;  // of its first byte, in the input
  std::uint32_t place =
      no_place;            // where in its chunk that was; 0 with the chunk's header in front
  std::uint32_t size = 0;  // in bytes
};

class run_store {
 public:
  run_store() = default;
  run_store(const run_store&) = delete;
  run_store& operator=(const run_store&) = delete;
  ~run_store();

  // False when it cannot be kept; what was kept before stays.
  [[nodiscard]] bool add(const record_run& run, std::span<const std::byte> bytes);

  using run_use = std::function<void(const record_run&, std::span<const std::byte>)>;
  // False when runs could not be read back.
  [[nodiscard]] bool for_each(const run_use& use);

 private:
  bool flush();

  std::vector<std::byte> memory_;  // what is not in the file
  std::uint64_t in_file_ = 0;      // bytes
  int file_ = -1;
};

}  // namespace zanvik
