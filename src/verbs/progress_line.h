// A line on a terminal's standard error: the share of bytes that were read, and the time left.
#pragma once

#include <chrono>
#include <cstdint>

namespace zanvik {

class progress_line {
 public:
  // `total` bytes are to be read. Shows nothing if `show` is false.
  progress_line(bool show, std::uint64_t total) : show_(show && total != 0), total_(total) {}
  progress_line(const progress_line&) = delete;
  progress_line& operator=(const progress_line&) = delete;
  ~progress_line();

  // The number of bytes read so far. Shows it at most a few times per second.
  void update(std::uint64_t done);

  // Whether standard error is a terminal.
  static bool has_terminal();

 private:
  using clock = std::chrono::steady_clock;

  bool show_;
  bool shown_ = false;
  std::uint64_t total_;
  clock::time_point start_ = clock::now();
  clock::time_point last_ = start_;
};

}  // namespace zanvik
