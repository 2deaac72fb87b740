// Template bodies of a run, so that a body that comes again in a later chunk is known for what it
// is without being decoded.
//
// Windows writes each template into every chunk that uses it. The copies differ only in where
// their names stand: in the body at the first use in the chunk, or at an earlier place of it. So a
// body is compared with the ones seen under its GUID byte by byte, but for the offsets of its
// names and their chain links, and the names themselves are compared wherever they stand. Bodies
// that pass are decoded alike; whatever is unusual in one keeps it out of here.
#pragma once

#include <cstdint>
#include <unordered_map>
#include <vector>

#include "evtx/bxml/bxml_tokens.h"
#include "evtx/bxml/slot_table.h"

namespace zanvik {

class template_bodies {
 public:
  // A number from 1 that two definitions share when their bodies are decoded alike; 0 when nothing
  // is known of it. `definition` is the chunk offset of a definition that has that GUID.
  std::uint32_t identify(const chunk_view& chunk, std::uint64_t definition,
                         std::uint32_t size_record, const guid_bytes& guid);

  // Starts anew when more is held than the limits allow; call it between chunks. True when the
  // numbers given so far mean nothing any more.
  bool drop_if_full();

 private:
  // A name that the body refers to: where its offset stands in the body, and the name.
  struct name_place {
    std::uint32_t field = 0;
    bool here = false;          // the name stands right behind the offset
    bool form_matters = false;  // an element whose layout depends on the offset's bytes
    std::uint32_t name = 0;     // its UTF-16 bytes in `names`, when it stands elsewhere
    std::uint32_t name_bytes = 0;
  };
  struct known_body {
    std::uint32_t id = 0;
    std::vector<std::byte> bytes;
    std::vector<std::byte> names;
    std::vector<name_place> places;
  };

  static bool is_same(const known_body& known, const chunk_view& chunk, std::uint64_t body);
  static bool is_same_name(const known_body& known, const name_place& place,
                           const chunk_view& chunk, std::uint64_t body);
  static bool note_name(const chunk_view& chunk, std::uint64_t body, std::uint64_t at,
                        const named_token& token, bool is_element, known_body& known);
  static bool learn(const chunk_view& chunk, std::uint64_t body, std::uint32_t size,
                    known_body& known);

  std::unordered_map<std::uint64_t, std::vector<known_body>> by_key_;
  std::uint32_t last_id_ = 0;
  std::size_t held_bytes_ = 0;
};

}  // namespace zanvik
