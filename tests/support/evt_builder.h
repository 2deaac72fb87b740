// A legacy .evt log: header, records, a cursor record, garbage, all in file order.
//
//   auto log = evt_builder().add({.event_id = 6005, .source = "EventLog"}).cursor();
//
// In: records with as many fields as the test needs. Out: a valid file; offsets and lengths in a
// record's head can be overridden before, or changed afterwards.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "byte_builder.h"

namespace zanvik::testing {

struct evt_record_fields {
  std::uint32_t record_num = 0;               // 0: one more than the previous record
  std::uint32_t time_generated = 1705305600;  // 2024-01-15 08:00:00 UTC
  std::uint32_t event_id = 6005;
  std::uint16_t event_type = 4;
  std::uint16_t event_category = 0;
  std::string source{"EventLog"};
  std::string computer{"FABRIKAM-XP01"};
  std::string sid{};  // text; empty for none
  std::vector<std::string> strings{};
  byte_vector data{};
  std::optional<std::uint32_t> record_size{};
  std::optional<std::uint16_t> num_strings{};
  std::optional<std::uint32_t> string_offset{};
  std::optional<std::uint32_t> sid_offset{};
  std::optional<std::uint32_t> data_offset{};
};

// The bytes of one record: 56 bytes of head, source, computer, SID, strings, data, padding to a
// multiple of 4, the length again.
byte_vector evt_record_bytes(const evt_record_fields& fields);

class evt_builder : public file_bytes {
 public:
  evt_builder();

  evt_builder& add(evt_record_fields fields);
  // The 40-byte record that ends the live range.
  evt_builder& cursor();
  evt_builder& raw(std::span<const std::byte> bytes);

  // Offset of the record in the file; records count from 0 in file order.
  std::size_t record_offset(std::size_t record) const { return record_offsets_.at(record); }
  std::size_t record_count() const { return record_offsets_.size(); }

 private:
  std::vector<std::size_t> record_offsets_;
  std::uint32_t last_number_ = 0;
  std::uint32_t oldest_number_ = 1;
};

}  // namespace zanvik::testing
