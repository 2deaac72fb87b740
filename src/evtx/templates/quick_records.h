// The quick path of a template record: its templates are looked up, what they decide is computed
// once (template_store.h), and of the record itself only the slot table is read.
//
// It accepts only ordinary records: one template, at most one nested template in one slot, at most
// one slot of plain binary XML, every value inside the chunk. For these it returns exactly what
// template_record.h returns; all others it leaves to that. Which path a record takes, and what that
// costs, depends on its chunk alone. Tests compare the two, record by record.
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
    too_much,  // the work budget of the chunk is used up: the record is lost
  };
  // Reads the record whose binary XML starts at `bxml` with `head`. New templates of the record are
  // added to the store's catalogue, as in the plain way.
  answer read(const chunk_view& chunk, std::uint64_t bxml, const instance_head& head);

  // Of the last record, until the next one is read.
  std::span<const record_slot> slots() const { return std::span(slots_).first(slot_count_); }
  const record_layout* layout() const { return layout_; }
  // The composed text of the slot of plain binary XML, if there is one; the caller may move it.
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
  std::uint64_t cost_ = 0;  // of the current record, in bytes of its slot tables
  const record_layout* layout_ = nullptr;
  std::string plain_text_;
  std::size_t plain_slot_ = 0;  // among all slots
};

}  // namespace zanvik
