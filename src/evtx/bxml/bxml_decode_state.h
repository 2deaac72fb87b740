// The state of one decode of binary XML, shared by the two sources that implement it:
// bxml_decoder.cpp, and bxml_substitutions.cpp for templates and their slots. Internal to the
// decoder; bxml_decoder.h is the way in.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "evtx/bxml/bxml_decoder.h"
#include "evtx/bxml/bxml_tokens.h"

namespace zanvik {

inline bool is_data_section(std::string_view name) {
  return name == "EventData" || name == "UserData";
}

// One decode. `items_` is the deque: its back is the newest item, its front the oldest, normally
// the element.
class bxml_decode {
 public:
  bxml_decode(std::string* text, field_map* fields, const bxml_cursor& cursor, std::uint64_t limit)
      : chunk_(cursor.chunk),
        bytes_(cursor.chunk.bytes),
        cursor_(cursor),
        text_(text),
        fields_(fields),
        position_(cursor.position),
        remaining_(limit == no_limit ? cursor.chunk.bound : limit),
        template_body_(cursor.template_body),
        items_(stacks_of(cursor).items),
        open_names_(stacks_of(cursor).open_names) {}

  bxml_result run();

 private:
  enum class beginning { refused, fragments, no_header };
  beginning start();
  void run_fragments();
  void run_fragment();
  void read_values_in_place();
  bool has_tokens() const { return remaining_ >= 5 && position_ < bytes_.size(); }
  static unsigned handler_of(std::uint8_t token) { return token & 0x0f; }
  bool dispatch(std::uint8_t token);
  std::uint64_t consume(std::uint64_t length);

  void flush();
  void fill_system(std::uint64_t begin);
  bool open_element(std::uint8_t token);
  void close_empty_element();
  void end_element();
  bool value_text(std::uint8_t token);
  void push_value(std::string_view text, std::uint8_t token);
  bool attribute(std::uint8_t token);
  bool character_reference(std::uint8_t token);
  bool entity_reference(std::uint8_t token);
  bool substitution(bool optional);
  bool name_slot(std::uint32_t number, bool optional);
  bool write_slot(std::uint32_t number, bool optional);
  bool write_value(std::uint32_t number);
  bool fragment_header();
  bool instance_inside();

  std::uint64_t template_instance(const instance_head& head, std::uint64_t at);
  std::uint64_t walk_slot_table(std::uint64_t at);
  void decode_nested(std::uint64_t at, std::vector<slot_entry>* slots, bool template_body);

  void push_reference(std::string_view reference, std::uint8_t token);
  void push(std::string_view item, std::uint16_t word) { items_.push_back({item, word}); }
  std::uint16_t data_bit() const { return in_data_section_ ? word_in_data : std::uint16_t{0}; }
  void write(std::string_view piece) {
    if (text_) text_->append(piece);
  }
  bool spend_token(const named_token& token) {
    return spend(token.head_length + 2 * token.name.units_read);
  }
  bool spend(std::uint64_t n) { return work_budget::spend(*cursor_.budget, n); }
  static bxml_stacks& stacks_of(const bxml_cursor& cursor) {
    return cursor.chunk.memory->stacks_at(cursor.depth);
  }

  const chunk_view& chunk_;
  const byte_cursor& bytes_;
  const bxml_cursor& cursor_;
  std::string* text_;
  field_map* fields_;
  std::uint64_t position_;
  std::uint64_t remaining_;
  bool template_body_;

  std::vector<element_item>& items_;
  std::vector<std::string_view>& open_names_;
  data_counters counters_;
  bxml_result result_;
  bool ended_ = false;               // no fragment follows
  bool after_substitution_ = false;  // there was one in this fragment
  bool after_reference_ = false;     // a value that follows belongs to its run
  bool in_data_section_ = false;     // of an element inside EventData or UserData
  bool start_tag_open_ = false;      // values are attributes and quoted
  bool slot_named_ = false;          // the items of this element are used up
};

}  // namespace zanvik
