// Memory for the kept records of a log and their values, in a few large pieces: reserved by an
// upper bound, kept by what was used. A log of a million records would otherwise spend as long on
// new pages as on rows; large pages, where the system has them, are fetched 512 at a time.
#pragma once

#include <cstddef>
#include <cstdlib>
#include <memory>
#include <vector>

#include "base/tight_buffers.h"

namespace zanvik {

class record_arena {
 public:
  // Bytes after everything kept that may be read, though they mean nothing.
  static constexpr std::size_t slack = 64;

  // Contiguous room for `bytes`, valid until the next `reserve`; nothing is kept before `keep`.
  char* reserve(std::size_t bytes) {
    if (tight_buffers || bytes > room_) grow(bytes);
    return next_;
  }
  // Room for `bytes` more after the first `used` bytes of what was reserved, which it moves along.
  // Returns the new address of the first used byte.
  char* extend(std::size_t used, std::size_t bytes) {
    if (tight_buffers || used + bytes > room_) move_along(used, bytes);
    return next_;
  }
  // How much of what was last reserved, or moved along, may be used.
  std::size_t room() const { return room_; }
  // Keeps the first `bytes` of what was reserved.
  void keep(std::size_t bytes) {
    next_ += bytes;
    room_ -= bytes;
  }
  // Keeps nothing except the memory that the next log certainly needs.
  void clear();

  // Memory that lives as long as somebody holds it.
  using held_memory = std::shared_ptr<char>;
  // Adds the memory of everything kept since the last call to `memory`. What is still free of it is
  // used for what is kept next.
  void share(std::vector<held_memory>& memory);

 private:
  struct piece {
    held_memory memory;
    std::size_t room = 0;
  };

  void grow(std::size_t bytes);
  void move_along(std::size_t used, std::size_t bytes);

  std::vector<piece> pieces_;
  char* next_ = nullptr;
  std::size_t room_ = 0;
};

}  // namespace zanvik
