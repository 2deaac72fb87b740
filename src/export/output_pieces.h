// Text that waits for its turn to be written, in pieces of memory that are used again.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include "export/output_buffer.h"

namespace zanvik {

// Pieces that are free. For any thread.
class piece_memory {
 public:
  std::unique_ptr<char[]> take();
  void give_back(std::unique_ptr<char[]> piece);

 private:
  std::mutex mutex_;
  std::vector<std::unique_ptr<char[]>> free_;
};

class output_pieces {
 public:
  explicit output_pieces(piece_memory& memory) : memory_(memory) {}
  output_pieces(const output_pieces&) = delete;
  output_pieces& operator=(const output_pieces&) = delete;
  ~output_pieces();

  // Like piece_sink::take.
  std::unique_ptr<char[]> add(std::unique_ptr<char[]> piece, std::size_t bytes);
  // Writes everything and forgets it.
  void write_to(output_buffer& out);
  // Memory that is held.
  std::uint64_t bytes() const { return bytes_; }

 private:
  struct piece {
    std::unique_ptr<char[]> bytes;  // null if the text is a short one
    std::size_t size;
    std::string text;
  };

  piece_memory& memory_;
  std::vector<piece> pieces_;
  std::uint64_t bytes_ = 0;
};

}  // namespace zanvik
