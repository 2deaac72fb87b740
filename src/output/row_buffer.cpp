#include "output/row_buffer.h"

#include <algorithm>
#include <utility>

namespace zanvik {

void row_buffer::flush() {
  if (!out_) return;
  if (at_ != data_.get()) out_->write(data_.get(), at_ - data_.get());
  at_ = data_.get();
}

void row_buffer::allocate(std::size_t bytes) {
  data_ = std::make_unique_for_overwrite<char[]>(bytes + slack);
  at_ = data_.get();
  limit_ = at_ + bytes;
}

void row_buffer::make_room(std::size_t bytes) {
  if (!out_) return grow(bytes);
  flush();
  const auto size = static_cast<std::size_t>(limit_ - data_.get());
  if (tight_buffers) {
    allocate(bytes);
  } else if (bytes > size) {
    // Twice the request, so that rows of this size are collected too.
    allocate(std::max(bytes * 2, default_bytes));
  }
}

void row_buffer::grow(std::size_t bytes) {
  const std::unique_ptr<char[]> before = std::move(data_);
  const auto used = static_cast<std::size_t>(at_ - before.get());
  allocate(tight_buffers ? used + bytes : 2 * (used + bytes));
  std::memcpy(data_.get(), before.get(), used);
  at_ += used;
}

}  // namespace zanvik
