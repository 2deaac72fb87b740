#include "output/row_buffer.h"

#include <algorithm>

namespace zanvik {

void row_buffer::flush() {
  if (at_ != data_.get()) out_.write(data_.get(), at_ - data_.get());
  at_ = data_.get();
}

void row_buffer::allocate(std::size_t bytes) {
  data_ = std::make_unique_for_overwrite<char[]>(bytes + slack);
  at_ = data_.get();
  limit_ = at_ + bytes;
}

void row_buffer::make_room(std::size_t bytes) {
  flush();
  const auto size = static_cast<std::size_t>(limit_ - data_.get());
  if (tight_buffers) {
    allocate(bytes);
  } else if (bytes > size) {
    // Twice the request, so that rows of this size are collected too.
    allocate(std::max(bytes * 2, default_bytes));
  }
}

}  // namespace zanvik
