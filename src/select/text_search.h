// The search for a text in all names and values of .evtx records. What the template decides is
// decided once for each layout, and values that cannot contain the text are not made into texts.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>

#include "evtx/record_fields.h"

namespace zanvik {

class text_search {
 public:
  explicit text_search(std::string_view text);

  const std::string& text() const { return text_; }
  bool matches(const record_fields& record);

 private:
  bool layout_holds(const record_layout& layout);
  bool slot_holds(const record_fields& record, std::size_t slot);

  std::string text_;
  bool only_in_free_text_;  // no number, time or identifier can contain it
  std::unordered_map<std::uint64_t, bool> by_layout_;  // by layout id
  std::uint64_t layout_id_ = 0;                        // of the previous record
  bool layout_answer_ = false;
  std::string buffer_;
  value_writer writer_;
};

}  // namespace zanvik
