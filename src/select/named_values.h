// The values that conditions name, for one .evtx record after the other. A name is looked up once
// for each layout, and a value's text is made at most once for each record, when needed. The
// answers are those of find_field (evtx_fields.h) without cleaning.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "evtx/record_fields.h"

namespace zanvik {

class named_values {
 public:
  // The number of a name; equal names have one number. All are added before the first record.
  std::size_t add(std::string_view name);

  // Makes `record` the current one; it has to live as long as its values are used.
  void start_record(const record_fields& record);

  // The ID of the layout that has the value as a literal, so that its text is the same for all
  // records of that layout; 0 if the value is the record's own. Call it after `text`.
  std::uint64_t layout_of(std::size_t name) const {
    return (*places_)[name].kind == place::field ? record_->layout->id : 0;
  }

  // The text of the value, valid until the next record; nothing if the record has no such field.
  std::optional<std::string_view> text(std::size_t name);

 private:
  struct place {
    enum kind_type : std::uint8_t { unknown, none, slot, field };
    kind_type kind = unknown;
    std::uint32_t index = 0;  // of the slot, or of the field in the layout
  };
  struct name_state {
    std::string name;
    std::uint64_t record = 0;  // the record of `text`, by `record_count_`
    std::string text;
  };

  std::vector<place>& places_of(const record_layout& layout);
  place find(const record_layout& layout, std::string_view name) const;

  std::vector<name_state> names_;
  std::unordered_map<std::string, std::size_t> numbers_;
  std::unordered_map<std::uint64_t, std::vector<place>> layouts_;  // by layout id, by name
  std::uint64_t layout_id_ = 0;                                    // of `places_`
  std::vector<place>* places_ = nullptr;
  std::vector<place> own_places_;  // of a layout of one record
  const record_fields* record_ = nullptr;
  std::uint64_t record_count_ = 0;
};

}  // namespace zanvik
