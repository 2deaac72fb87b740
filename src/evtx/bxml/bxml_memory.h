// Memory that the decodes of one reader share, so that a stream is read without an allocation: the
// names of the current chunk, each converted to UTF-8 once; the texts of the current record; and
// the stacks of nested streams.
//
// A view into `names` is valid until the next `start_chunk`, one into `texts` until the next
// `start_record`.
#pragma once

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <memory>
#include <span>
#include <string_view>
#include <vector>

#include "evtx/container/chunk_table.h"

namespace zanvik {

struct chunk_view;

// Texts one after the other in a few large pieces, which are kept for the next record.
class text_arena {
 public:
  // The UTF-16 text at `bytes`, up to a NUL, as UTF-8. `units_read` counts its units.
  std::string_view add_utf16(std::span<const std::byte> bytes, std::size_t& units_read);
  // The pieces joined.
  std::string_view add_joined(std::initializer_list<std::string_view> pieces);
  bool empty() const { return pieces_.empty() || next_ == pieces_.front().bytes.get(); }
  void clear();

 private:
  char* reserve(std::size_t bytes);
  std::string_view keep(const char* end);

  struct memory_piece {
    std::unique_ptr<char[]> bytes;
    std::size_t size = 0;
  };
  std::vector<memory_piece> pieces_;
  char* next_ = nullptr;
  std::size_t room_ = 0;
};

// A name or text with a count of UTF-16 units, as in the chunk.
struct counted_text {
  std::string_view text;         // empty if its length fails its bound or it does not fully exist
  std::uint64_t units = 0;       // as counted
  std::uint64_t units_read = 0;  // units read: a NUL may end a text before its count does
  std::uint64_t length = 0;      // of the whole, with its head and the optional NUL after it
  bool present = false;          // its head exists
};

// The name entries of one chunk by their offsets.
class chunk_names {
 public:
  void start_chunk();
  // The name entry (link, hash, count, UTF-16 name) at `offset`. Valid until the next call.
  const counted_text& at(const chunk_view& chunk, std::uint32_t offset);

 private:
  struct known_name {
    std::uint32_t offset = 0;
    counted_text name;
  };
  chunk_table<known_name, 1024> names_;
  text_arena texts_;
};

// One name, value or reference on the decoder's deque.
struct element_item {
  std::string_view text;
  std::uint16_t word = 0;  // token byte, plus the bits of bxml_decoder.h
};

// What one stream has open; one for each depth of nesting.
struct bxml_stacks {
  std::vector<element_item> items;
  std::vector<std::string_view> open_names;
};

class bxml_memory {
 public:
  chunk_names names;
  text_arena texts;

  void start_chunk() { names.start_chunk(); }
  void start_record() {
    if (!texts.empty()) texts.clear();
  }
  // The stacks of a stream at this depth, empty. Valid until a deeper stream is entered twice.
  bxml_stacks& stacks_at(std::size_t depth);

 private:
  std::vector<std::unique_ptr<bxml_stacks>> stacks_;
};

}  // namespace zanvik
