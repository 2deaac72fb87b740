// Template bodies of a run: a body that appears again in a later chunk is recognised without being
// decoded.
//
// Windows writes each template into every chunk that uses it. Two copies are the same template if
// their tokens, texts and names match, wherever the names are: in the body at the first use in the
// chunk, or at an earlier place in the chunk. Copies with their names in the same places are
// compared byte by byte, ignoring name offsets and chain links. Any other copy is scanned once into
// a normal form without sizes and offsets, and found by that. A body with anything unusual in it,
// or whose decoding would read a byte outside it, is not recognised.
#pragma once

#include <cstdint>
#include <unordered_map>
#include <vector>

#include "evtx/bxml/bxml_tokens.h"
#include "evtx/bxml/slot_table.h"
#include "evtx/templates/body_scan.h"

namespace zanvik {

class template_bodies {
 public:
  // A number from 1 that two definitions share only if their bodies are decoded alike; 0 if the
  // body is not recognised. Numbers are never reused. `definition` is the chunk offset of a
  // definition with that GUID. Reads at most a small multiple of `size_record` bytes.
  std::uint32_t identify(const chunk_view& chunk, std::uint64_t definition,
                         std::uint32_t size_record, const guid_bytes& guid);

  // The cost of the last call, in bytes of the chunk that it read. It depends on the chunk alone,
  // not on what was known before.
  std::uint64_t bytes_read() const { return bytes_read_; }

  // Empties the store if it exceeds the limits; call it between chunks. True if bodies get new
  // numbers from now on.
  bool drop_if_full();

 private:
  // Copies with one GUID and size that are compared before a body is scanned. More than a few are
  // rare; a new one replaces the oldest.
  static constexpr std::size_t copies_compared = 4;
  struct copy_list {
    body_copy copies[copies_compared];
    std::size_t next = 0;
  };
  struct normal_form {
    std::vector<std::byte> bytes;
    std::uint32_t number = 0;
  };

  std::uint32_t number_of_normal_form();
  void keep_copy(copy_list& list, body_copy copy, std::uint32_t number);

  std::unordered_map<std::uint64_t, copy_list> copies_;          // by keyed hash of GUID and size
  std::unordered_map<std::uint64_t, normal_form> normal_forms_;  // by keyed hash of the bytes
  std::uint32_t last_number_ = 0;
  std::size_t held_bytes_ = 0;
  std::uint64_t bytes_read_ = 0;
  body_scan scan_;
};

}  // namespace zanvik
