// Knowledge about templates: the definitions of the current chunk, the bodies of the run, and the
// layouts of their records.
//
// Work is done once for a run and charged once in each chunk: a definition costs its size, a layout
// the texts in it, whether it was made now or found from an earlier log. So the remaining budget of
// a chunk, and with it every result, depends on the chunk alone.
#pragma once

#include <cstdint>
#include <memory>
#include <unordered_map>

#include "evtx/record_fields.h"
#include "evtx/templates/template_bodies.h"
#include "evtx/templates/template_catalogue.h"

namespace zanvik {

// A template as a record refers to it: by the chunk offset of a definition.
struct known_template {
  std::uint32_t definition = 0;
  std::uint32_t size_record = 0;  // of the definition named
  template_ref ref;               // the catalogue's entry for its GUID
  std::uint32_t body = 0;         // number of the body at `ref`, 0 if it is not recognised
};

// Everything that decides the layout of an ordinary record.
struct layout_key {
  std::uint64_t first = 0;       // chunk offsets of the definitions that are decoded
  std::uint64_t second = 0;      // 0 for none
  std::uint32_t first_body = 0;  // and the numbers of their bodies
  std::uint32_t second_body = 0;
  std::uint16_t slots = 0;
  std::uint16_t nested_slot = 0;  // the slot of the second one, which has
  std::uint16_t children = 0;     // so many values
  std::uint16_t plain_slot = 0;   // from 1: a slot of plain binary XML; 0 for none

  bool operator==(const layout_key&) const = default;
};

class template_store {
 public:
  // Forgets the previous chunk. Drops knowledge from earlier chunks if it exceeds the limits.
  void start_chunk(const chunk_view& chunk);
  template_catalogue& catalogue() { return catalogue_; }

  // The template whose definition is there, if a record of this chunk named it before. Valid until
  // the next `enter`.
  const known_template* find(std::uint32_t definition);
  // Adds it. Null if the definition at `ref` does not have the size that `ref` states.
  const known_template* enter(const chunk_view& chunk, std::uint32_t definition,
                              std::uint32_t size_record, const template_ref& ref);

  enum class answer {
    found,
    mismatch,  // a definition does not have the size that is stated
    too_much,  // more than the records of a chunk may cost together
  };
  struct layout_answer {
    answer kind = answer::mismatch;
    const record_layout* layout = nullptr;  // of `found`; valid until the next chunk
  };
  layout_answer layout_for(const chunk_view& chunk, const layout_key& key);

  // The store's own layout of this content, with an id; valid until the next chunk.
  const record_layout* intern(record_layout layout);

 private:
  struct kept_layout {
    record_layout layout;
    std::uint64_t cost = 0;
  };
  struct chunk_layout {
    layout_key key;
    layout_answer answer;
  };
  struct key_hash {
    std::size_t operator()(const layout_key& key) const;
  };

  layout_answer find_layout(const chunk_view& chunk, const layout_key& key);
  const kept_layout* decode_layout(const chunk_view& chunk, const layout_key& key);
  bool is_unchanged(const chunk_view& chunk, const layout_key& key);
  const kept_layout* keep(record_layout layout);

  template_catalogue catalogue_;
  chunk_table<known_template, 128> definitions_;
  chunk_table<chunk_layout, 256> chunk_layouts_;

  template_bodies bodies_;
  std::unordered_map<layout_key, const kept_layout*, key_hash> by_bodies_;
  std::unordered_multimap<std::uint64_t, std::unique_ptr<kept_layout>> layouts_;  // by keyed hash
  std::size_t held_bytes_ = 0;
};

// Decodes what `key` says about a record at once, charged only to the body bytes of `budget`. The
// two bodies are decoded over empty slots: the names in them do not depend on values. False if the
// first definition does not have the stated size.
bool decode_key(const chunk_view& chunk, const layout_key& key, record_layout& layout);

}  // namespace zanvik
