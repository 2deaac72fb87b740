// One record of a legacy .evt log: a fixed head, then a source and a computer name, a SID, strings
// and data at offsets that the head gives.
//
// In: the buffer of the whole log, and the position of a record. Out: an `evt_record` whose texts
// and bytes are views into that buffer; nothing is copied or converted until needed. A field that
// fails its bounds is empty, and the rest of the record is still used. Bytes past the end of the
// buffer read as zero units.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "base/byte_cursor.h"

namespace zanvik {

namespace evt_layout {
inline constexpr std::uint32_t signature = 0x654c664c;         // "LfLe", of header and record
inline constexpr std::uint32_t cursor_signature = 0x11111111;  // of the record that ends the log
inline constexpr std::uint64_t signature_at = 4;
inline constexpr std::uint64_t record_head_bytes = 56;
}  // namespace evt_layout

// UTF-16LE units, none of them zero.
using evt_text = std::span<const std::byte>;

struct evt_record {
  // The head as in the file. Offsets count from the record's start.
  std::uint32_t record_size = 0;
  std::uint32_t record_num = 0;
  std::uint32_t time_generated = 0;  // seconds since 1970
  std::uint32_t time_written = 0;    // likewise; not used
  std::uint32_t event_id = 0;        // with qualifiers in the high word
  std::uint16_t event_type = 0;
  std::uint16_t num_strings = 0;
  std::uint16_t event_category = 0;
  std::uint16_t flags = 0;
  std::uint32_t last_record_num = 0;
  std::uint32_t string_offset = 0;
  std::uint32_t usersid_length = 0;
  std::uint32_t usersid_offset = 0;
  std::uint32_t data_length = 0;
  std::uint32_t data_offset = 0;

  std::uint64_t time = 0;         // FILETIME of `time_generated`; 0 when that is 0
  std::uint64_t file_offset = 0;  // of the record in the buffer
  evt_text source_name;
  evt_text computer_name;
  std::vector<evt_text> strings;
  std::span<const std::byte> sid;
  std::span<const std::byte> data;

  // The number by which a record is selected and shown.
  std::uint16_t short_event_id() const { return static_cast<std::uint16_t>(event_id); }
  // Empties everything but keeps the memory.
  void clear();
};

// Reads the record at `offset`, whose head is wholly in the buffer and whose `record_size` does not
// reach past it. `text_budget` is how much work the texts of the log's records may still cause
// (limits.h); when it is used up, texts and strings stay empty.
void parse_evt_record(const byte_cursor& buffer, std::uint64_t offset, evt_record& record,
                      std::int64_t& text_budget);

// The same for a single record, without a budget.
void parse_evt_record(const byte_cursor& buffer, std::uint64_t offset, evt_record& record);

// Writes "S-1-5-21-..." for the bytes of a SID at `out`, which has room for `longest_sid_text`, and
// returns its end. Writes nothing if they are fewer than 12, or too few for their count of
// sub-authorities. Only the last of the six bytes of the authority is shown, which is meant.
char* write_sid_text(char* out, std::span<const std::byte> sid);

// "S-255-255" and 255 sub-authorities of 10 digits.
inline constexpr std::size_t longest_sid_text = 9 + 255 * 11;

// Sets `text` to the same.
void sid_to_text(std::string& text, std::span<const std::byte> sid);

// Appends the text as UTF-8.
void append_evt_text(std::string& out, evt_text text);

}  // namespace zanvik
