// The quick road of a template record: which templates it is made from is looked up, what they
// decide is worked out once for each pair of templates, and of the record itself only the slot
// table is walked.
//
// It takes ordinary records only: one template, at most one nested template in one slot, every
// value inside the chunk. For these it gives exactly what template_record.h gives; everything else
// it leaves to that. Tests hold the two together, record by record.
#pragma once

#include <array>
#include <cstdint>
#include <unordered_map>
#include <vector>

#include "evtx/bxml/bxml_tokens.h"
#include "evtx/templates/layout_cache.h"
#include "evtx/templates/template_bodies.h"
#include "evtx/templates/template_catalogue.h"

namespace zanvik {

class quick_records {
 public:
  explicit quick_records(layout_cache& layouts) : layouts_(layouts) {}

  // Forgets what belongs to the chunk before; `layouts_dropped` says that the cache of layouts has
  // started anew.
  void start_chunk(bool layouts_dropped);

  // Reads the record whose binary XML starts at `bxml` with `head`. Fills `slots` (cleared first)
  // and returns the layout; null when this is no record for the quick road. New templates of the
  // record are added to `catalogue`, as the plain way does.
  const record_layout* read(template_catalogue& catalogue, const chunk_view& chunk,
                            std::uint64_t bxml, const instance_head& head,
                            std::vector<record_slot>& slots);

 private:
  // A template as a record names it: by the chunk offset of a definition.
  struct known_template {
    std::uint32_t definition = 0;  // 0: none yet, no definition stands there
    std::uint32_t size_record = 0;
    const template_ref* ref = nullptr;  // what the catalogue has for its GUID
    std::uint32_t body = 0;             // what `bodies_` knows of the definition at `ref`
  };
  // Everything that decides a layout.
  struct layout_key {
    std::uint64_t first = 0;       // chunk offsets of the definitions that are decoded
    std::uint64_t second = 0;      // 0 for none
    std::uint32_t first_body = 0;  // and what their bodies are known as
    std::uint32_t second_body = 0;
    std::uint16_t slots = 0;
    std::uint16_t nested_slot = 0;
    std::uint16_t children = 0;

    bool operator==(const layout_key&) const = default;
  };
  struct known_layout {
    layout_key key;
    const record_layout* layout = nullptr;
  };
  struct key_hash {
    std::size_t operator()(const layout_key& key) const;
  };

  known_template& place_of(std::uint32_t definition);
  bool enter(const chunk_view& chunk, std::uint32_t definition, std::uint32_t size_record,
             const template_ref* ref, known_template& place);
  const known_template* first_template(template_catalogue& catalogue, const chunk_view& chunk,
                                       std::uint64_t bxml, const instance_head& head);
  bool read_own_slots(template_catalogue& catalogue, const chunk_view& chunk, std::uint64_t table,
                      std::vector<record_slot>& slots, layout_key& key);
  bool read_nested(template_catalogue& catalogue, const chunk_view& chunk, std::uint64_t value,
                   std::vector<record_slot>& slots, layout_key& key);
  const record_layout* layout_for(const chunk_view& chunk, const layout_key& key);
  layout_key body_key(const layout_key& key);
  const record_layout* decode_layout(const chunk_view& chunk, const layout_key& key);

  static constexpr std::size_t places = 256;  // a power of two, several times a chunk's templates

  std::uint64_t cost_ = 0;  // of the record in hand, in bytes of its slot tables
  layout_cache& layouts_;
  template_bodies bodies_;
  std::unordered_map<layout_key, const record_layout*, key_hash> by_bodies_;  // of the whole run
  std::array<known_template, places> templates_;
  std::array<known_layout, places> known_layouts_;
};

}  // namespace zanvik
