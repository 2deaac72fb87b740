#include "run/log_file.h"

#include <algorithm>
#include <utility>

namespace zanvik {

bool log_file::open(const std::string& path) {
  read_ = 0;
  path_ = path;
  if (file_.open(path) && !first(1).empty()) return true;
  file_.close();
  return false;
}

std::span<const std::byte> log_file::first(std::size_t count) {
  // The first read also fetches everything that the kind of a log is recognised by.
  constexpr std::size_t least_read = 256;
  count = std::min(count, bytes_.size());
  if (count > read_) {
    std::size_t got = std::max(count, least_read) - read_;
    if (file_.read_raw(std::span(bytes_).subspan(read_, got), got, read_)) read_ += got;
  }
  return std::span(bytes_).first(std::min(count, read_));
}

std::span<std::byte> log_file::take_all() {
  if (read_ != file_.get_size()) return {};
  return std::span(bytes_).first(std::exchange(read_, 0));
}

}  // namespace zanvik
