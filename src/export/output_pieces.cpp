#include "export/output_pieces.h"

#include <string_view>

namespace zanvik {
namespace {

// Less than this is copied, so that short texts do not hold whole pieces.
constexpr std::size_t least_bytes = output_buffer::buffer_bytes / 4;

}  // namespace

std::unique_ptr<char[]> piece_memory::take() {
  {
    const std::lock_guard held(mutex_);
    if (!free_.empty()) {
      std::unique_ptr<char[]> piece = std::move(free_.back());
      free_.pop_back();
      return piece;
    }
  }
  return std::unique_ptr<char[]>(new char[output_buffer::buffer_bytes]);
}

void piece_memory::give_back(std::unique_ptr<char[]> piece) {
  const std::lock_guard held(mutex_);
  free_.push_back(std::move(piece));
}

output_pieces::~output_pieces() {
  for (piece& each : pieces_) {
    if (each.bytes) memory_.give_back(std::move(each.bytes));
  }
}

std::unique_ptr<char[]> output_pieces::add(std::unique_ptr<char[]> bytes, std::size_t size) {
  if (size < least_bytes) {
    pieces_.push_back({nullptr, size, std::string(bytes.get(), size)});
    bytes_ += size;
    return bytes;
  }
  pieces_.push_back({std::move(bytes), size, {}});
  bytes_ += output_buffer::buffer_bytes;
  return memory_.take();
}

void output_pieces::write_to(output_buffer& out) {
  for (piece& each : pieces_) {
    if (!each.bytes) {
      out.append(each.text);
      continue;
    }
    out.write_through({each.bytes.get(), each.size});
    memory_.give_back(std::move(each.bytes));
  }
  pieces_.clear();
  bytes_ = 0;
}

}  // namespace zanvik
