#include "evt/evt_record.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <limits>
#include <utility>

#include "base/digits.h"
#include "base/limits.h"
#include "base/time_value.h"
#include "base/utf16.h"

namespace zanvik {
namespace {

// A text's end is searched within this many units; if it is not there, its length is 0.
constexpr std::size_t length_units = 513;
// For a text that has no length of its own.
constexpr std::size_t default_units = 500;

// Units before the first zero unit; all of them if there is none.
std::size_t units_to_nul(std::span<const std::byte> units) {
  const std::size_t count = units.size() / 2;
  std::size_t at = 0;
  for (; count - at >= 4; at += 4) {
    std::uint64_t four;
    std::memcpy(&four, units.data() + 2 * at, sizeof four);
    // The lowest bit set is in the first zero unit; only units above it can be set by error.
    constexpr std::uint64_t ones = 0x0001000100010001;
    const std::uint64_t zeros = (four - ones) & ~four & (ones << 15);
    if (zeros != 0) return at + static_cast<std::size_t>(std::countr_zero(zeros)) / 16;
  }
  for (; at < count; ++at) {
    if ((units[2 * at] | units[2 * at + 1]) == std::byte{0}) break;
  }
  return at;
}

// Reads the texts of one record.
class text_reader {
 public:
  text_reader(const byte_cursor& buffer, std::uint64_t offset, std::int64_t& budget)
      : bytes_(buffer.bytes()), at_(offset), budget_(budget) {}

  // Reads a text of at most `limit` units into `text` and moves past its end, by the length that a
  // new search gives: 0 if it is above 512 units, which moves by one unit, into the text. That is
  // meant. Returns false if the budget does not allow it.
  bool read(std::size_t limit, evt_text& text, std::size_t& length) {
    if (budget_ < 0) return false;
    const auto rest = bytes_.subspan(std::min<std::uint64_t>(at_, bytes_.size()));
    const std::size_t most = std::min(rest.size() / 2, std::max(limit, length_units));
    const std::size_t found = units_to_nul(rest.first(2 * most));
    budget_ -= static_cast<std::int64_t>(2 * found) + limits::evt_cost_per_text;
    if (budget_ < 0) return false;
    text = rest.first(2 * std::min(found, limit));
    length = found < length_units ? found : 0;
    at_ += 2 * (length + 1);
    return true;
  }

 private:
  std::span<const std::byte> bytes_;
  std::uint64_t at_;
  std::int64_t& budget_;
};

void read_head(byte_cursor in, evt_record& record) {
  record.record_size = in.read_u32();
  in.read_u32();  // the signature
  record.record_num = in.read_u32();
  record.time_generated = in.read_u32();
  record.time_written = in.read_u32();
  record.event_id = in.read_u32();
  record.event_type = in.read_u16();
  record.num_strings = in.read_u16();
  record.event_category = in.read_u16();
  record.flags = in.read_u16();
  record.last_record_num = in.read_u32();
  record.string_offset = in.read_u32();
  record.usersid_length = in.read_u32();
  record.usersid_offset = in.read_u32();
  record.data_length = in.read_u32();
  record.data_offset = in.read_u32();
}

void read_strings(text_reader in, evt_record& record) {
  if (record.string_offset >= record.record_size) return;
  // In bytes, and 2 too large for each string read: the zero units are not counted, so the last
  // strings may come from after the record. That is meant.
  std::int64_t remaining = std::int64_t{record.record_size} - record.string_offset;
  const std::size_t count =
      std::min<std::size_t>(record.num_strings, limits::evt_strings_per_record);
  while (record.strings.size() < count && remaining >= 1) {
    evt_text text;
    std::size_t length;
    if (!in.read(static_cast<std::size_t>(remaining) / 2, text, length)) return;
    record.strings.push_back(text);
    remaining -= static_cast<std::int64_t>(2 * length);
  }
}

void read_names(text_reader in, evt_record& record) {
  std::size_t length;
  const std::size_t limit = (record.record_size - evt_layout::record_head_bytes) / 2;
  if (in.read(limit, record.source_name, length)) {
    in.read(default_units, record.computer_name, length);
  }
}

}  // namespace

void evt_record::clear() {
  auto kept = std::move(strings);
  kept.clear();
  *this = {};
  strings = std::move(kept);
}

void parse_evt_record(const byte_cursor& buffer, std::uint64_t offset, evt_record& record,
                      std::int64_t& text_budget) {
  record.clear();
  record.file_offset = offset;
  byte_cursor head = buffer;
  head.seek(offset);
  read_head(head, record);
  record.time = qx::time(record.time_generated, qx::type_time::unix_time).filetime();
  const std::uint64_t size = record.record_size;
  if (std::uint64_t{record.data_offset} + record.data_length <= size) {
    record.data = buffer.bytes_at(offset + record.data_offset, record.data_length);
  }
  if (record.usersid_length != 0 &&
      std::uint64_t{record.usersid_offset} + record.usersid_length <= size) {
    record.sid = buffer.bytes_at(offset + record.usersid_offset, record.usersid_length);
  }
  read_strings(text_reader(buffer, offset + record.string_offset, text_budget), record);
  // If, by the record's own sizes, there is no room for names after the head, there are none.
  constexpr std::uint64_t names_at = evt_layout::record_head_bytes;
  if (size > names_at && record.data_offset > names_at) {
    read_names(text_reader(buffer, offset + names_at, text_budget), record);
  }
}

void parse_evt_record(const byte_cursor& buffer, std::uint64_t offset, evt_record& record) {
  std::int64_t no_limit = std::numeric_limits<std::int64_t>::max();
  parse_evt_record(buffer, offset, record, no_limit);
}

char* write_sid_text(char* out, std::span<const std::byte> sid) {
  constexpr std::size_t shortest = 12;
  constexpr std::size_t sub_authorities_at = 8;
  if (sid.size() < shortest) return out;
  const auto count = std::to_integer<std::size_t>(sid[1]);
  if (sub_authorities_at + 4 * count > sid.size()) return out;
  *out++ = 'S';
  const auto put = [&out](std::uint32_t number) {
    *out++ = '-';
    out = write_decimal(out, number);
  };
  put(std::to_integer<std::uint32_t>(sid[0]));
  put(std::to_integer<std::uint32_t>(sid[7]));
  const byte_cursor bytes(sid);
  for (std::size_t i = 0; i < count; ++i) {
    put(bytes.at_or_zero<std::uint32_t>(sub_authorities_at + 4 * i));
  }
  return out;
}

void sid_to_text(std::string& text, std::span<const std::byte> sid) {
  char digits[longest_sid_text];
  text.assign(digits, write_sid_text(digits, sid));
}

void append_evt_text(std::string& out, evt_text text) { append_utf8_from_utf16(out, text); }

}  // namespace zanvik
