// The quick road of a template record: which templates it is made from is looked up, what they
// decide is worked out once (template_store.h), and of the record itself only the slot table is
// walked.
//
// It takes ordinary records only: one template, at most one nested template in one slot, at most
// one slot of plain binary XML, every value inside the chunk. For these it gives exactly what
// template_record.h gives; everything else it leaves to that. Which road a record takes, and what
// that costs, depends on its chunk alone. Tests hold the two together, record by record.
#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <string>

#include "evtx/bxml/bxml_tokens.h"
#include "evtx/templates/template_store.h"

namespace zanvik {

class quick_records {
 public:
  explicit quick_records(template_store& store) : store_(store) {}

  enum class answer {
    ordinary,  // `slots`, `layout` and, with a slot of plain binary XML, `plain` are set
    unusual,   // for template_record.h
    too_much,  // more than the records of a chunk may cost together: lost
  };
  // Reads the record whose binary XML starts at `bxml` with `head`. New templates of the record are
  // added to the store's catalogue, as the plain way does.
  answer read(const chunk_view& chunk, std::uint64_t bxml, const instance_head& head);

  // Of the record read last, until the next one is read.
  std::span<const record_slot> slots() const { return std::span(slots_).first(slot_count_); }
  const record_layout* layout() const { return layout_; }
  // The composed text of the slot of plain binary XML, if there is one; the text may be taken.
  std::string* plain_text() { return key_.plain_slot != 0 ? &plain_text_ : nullptr; }
  std::size_t plain_slot() const { return plain_slot_; }

 private:
  const known_template* first_template(const chunk_view& chunk, std::uint64_t bxml,
                                       const instance_head& head);
  template <bool children>
  bool walk_table(const chunk_view& chunk, std::uint64_t table);
  bool read_nested(const chunk_view& chunk, std::uint64_t value, std::uint32_t slot);
  bool read_nested_template(const chunk_view& chunk, std::uint64_t value,
                            const instance_head& head);
  bool read_plain_value(const chunk_view& chunk, std::uint64_t value);

  template_store& store_;
  std::array<record_slot, 2 * std::size_t{limits::slots_per_table}> slots_;
  std::size_t slot_count_ = 0;
  layout_key key_;
  std::uint64_t cost_ = 0;  // of the record in hand, in bytes of its slot tables
  const record_layout* layout_ = nullptr;
  std::string plain_text_;
  std::size_t plain_slot_ = 0;  // among all slots
};

}  // namespace zanvik
