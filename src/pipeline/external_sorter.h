// Sorts items by their keys, as many as the disk has room for, within a fixed amount of memory.
//
// Items are collected in one block of memory. When it is full they are sorted and written to a
// temporary file as a run. At the end the runs are merged; if there are more than there are buffers
// in memory, in several passes. Without a run the disk is not used.
//
// In: items in any order. Out: all of them, equal keys in the order of arrival. An item larger than
// the memory is accepted, and is alone in memory while it is passed on.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "pipeline/sort_key.h"
#include "pipeline/temporary_file.h"

namespace zanvik {

struct sort_settings {
  std::uint64_t memory_bytes = std::uint64_t{512} << 20;
  std::string folder;  // of temporary files; empty for TMPDIR
};
// Smaller values are raised to this.
inline constexpr std::uint64_t least_sort_memory = std::uint64_t{1} << 20;

class external_sorter {
 public:
  explicit external_sorter(const sort_settings& settings);
  external_sorter(const external_sorter&) = delete;
  external_sorter& operator=(const external_sorter&) = delete;

  // False after an error; later items are then dropped.
  [[nodiscard]] bool add(const sort_key& key, std::string_view bytes);
  // Passes on all items and forgets them. False after an error, or if `use` ended the work.
  [[nodiscard]] bool finish(const item_use& use);

  // The error in words; empty if there was none.
  const std::string& error() const { return error_; }
  // Number of runs written, including those of merging passes.
  std::uint64_t runs_written() const { return runs_written_; }

 private:
  struct entry {
    sort_key key;
    std::uint64_t offset;
    std::uint64_t bytes;
  };
  struct run {
    std::uint64_t offset;
    std::uint64_t bytes;
  };
  class run_writer;
  class run_input;

  entry* entries() { return reinterpret_cast<entry*>(memory_.get() + memory_bytes_) - count_; }
  bool allocate();
  void sort_entries();
  bool write_run();
  bool open_file();
  bool merge_passes();
  bool merge(std::vector<run> runs, std::uint64_t buffer_bytes, const item_use& use);
  bool fail(const std::string& what);

  std::size_t memory_bytes_;
  std::string folder_;
  std::unique_ptr<char[]> memory_;  // bytes from the front, entries from the back
  std::size_t used_ = 0;            // bytes
  std::size_t count_ = 0;           // entries
  temporary_file file_;
  std::vector<run> runs_;
  std::uint64_t runs_written_ = 0;
  std::string error_;
};

}  // namespace zanvik
