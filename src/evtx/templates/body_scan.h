// One pass over a template body: is it ordinary, where are its names, and what is it apart from
// their places?
//
// Ordinary means that decoding it reads only the body's own bytes and whole name entries of the
// chunk, with every bound far from its limit, so that the same tokens and names are decoded alike
// in any chunk of any log.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "evtx/container/chunk.h"

namespace zanvik {

// A name that a body refers to.
struct name_place {
  std::uint32_t field = 0;  // where the name's offset is in the body
  std::uint32_t name = 0;   // its UTF-16 bytes in `body_copy::names`, unless it is here
  std::uint32_t name_bytes = 0;
  bool here = false;        // the name directly follows the offset
  bool without_id = false;  // of an element whose layout depends on the offset's bytes
};

// A body as it was in one chunk.
struct body_copy {
  std::uint32_t number = 0;
  std::vector<std::byte> bytes;
  std::vector<std::byte> names;
  std::vector<name_place> places;

  std::size_t held_bytes() const {
    return bytes.size() + names.size() + places.size() * sizeof(name_place);
  }
};

// Whether the body at `body`, which is inside the chunk, is such a copy: the same bytes, ignoring
// name offsets and chain links, and the same names in places of the same kind.
bool is_copy(const body_copy& copy, const chunk_view& chunk, std::uint64_t body);

class body_scan {
 public:
  // Scans the body of `size` bytes at `body`, which is inside the chunk. False if it is not
  // ordinary; the results are then useless.
  bool scan(const chunk_view& chunk, std::uint64_t body, std::uint32_t size);
  // The tokens with texts and names, without sizes and offsets. Valid until the next scan.
  std::span<const std::byte> normal_form() const { return normal_; }
  // How far the last scan got.
  std::uint64_t bytes_read() const { return at_ - body_ + name_bytes_; }
  // What `is_copy` compares with, for the body that was scanned.
  body_copy take_copy(const chunk_view& chunk, std::uint64_t body, std::uint32_t size);

 private:
  bool scan_token(std::uint8_t token);
  bool scan_element(std::uint8_t token);
  bool scan_value();
  bool scan_name(std::uint64_t head, std::uint64_t field, bool without_id, std::uint64_t tail);
  bool take(std::uint64_t length);
  void note(std::uint64_t at, std::uint64_t length);

  const chunk_view* chunk_ = nullptr;
  std::uint64_t body_ = 0;
  std::uint64_t at_ = 0;
  std::uint64_t end_ = 0;
  std::uint64_t name_bytes_ = 0;  // used so far
  std::vector<std::byte> normal_;
  std::vector<std::byte> names_;
  std::vector<name_place> places_;
};

}  // namespace zanvik
