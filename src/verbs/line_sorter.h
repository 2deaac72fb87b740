// Lines in one order of time; of equal ones only the first, if wanted, with the number of copies.
//
// In: lines of any bytes, each with its place in the order and, where copies are to be found, with
// what makes it the same as another. Out: the lines by their places. Memory is bounded: what does
// not fit waits in temporary files.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>

#include "pipeline/pipeline.h"

namespace zanvik {

class line_sorter {
 public:
  // Changes the first of equal lines.
  using copies_note = std::function<void(std::string& line, std::uint64_t copies)>;
  using line_use = std::function<bool(std::string_view line)>;  // false: no more

  line_sorter(sort_settings settings, bool unique);

  bool unique() const { return by_identity_ != nullptr; }
  // Adds a line; `identity` counts only if `unique`, and then the last part of `place` is not used.
  // Errors are kept.
  void add(const sort_key& place, const sort_key& identity, std::string_view line);
  // Hands on the lines in order. False if they could not be sorted, or `use` wanted no more.
  bool finish(const copies_note& note, const line_use& use);
  // What went wrong; empty when nothing did.
  const std::string& error() const { return error_; }

 private:
  bool hand_on_first_ones(const copies_note& note);
  bool fail(const external_sorter& sorter);

  std::unique_ptr<external_sorter> by_time_, by_identity_;
  std::string packed_;
  std::uint64_t lines_ = 0;  // added
  std::string error_;
};

}  // namespace zanvik
