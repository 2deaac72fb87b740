#include "inspect/area.h"

#include <cstring>

namespace zanvik {
namespace {

enum class area_role : std::uint8_t { bytes, living, lost, free };
using enum area_role;

struct area_row {
  std::string_view name;
  std::string_view text;
  area_role role;
};

// In the order of the enumeration.
constexpr area_row rows[area_kinds] = {
    {"file_header", "file header", bytes},
    {"chunk_header", "chunk headers", bytes},
    {"end_record", "end-of-file record", bytes},
    {"record_read", "records read", living},
    {"record_outside", "records read, outside the declared numbers", living},
    {"record_bare", "records read without their template", living},
    {"record_part", "records read in part", living},
    {"lost_cut", "lost: reaches past its chunk or file", lost},
    {"wrapped_rest", "lost: rest of such a record, after the header", bytes},
    {"lost_size", "lost: record size too small", lost},
    {"lost_behind", "lost: after damage in its chunk", lost},
    {"lost_undeclared", "lost: beyond the declared count", lost},
    {"lost_chunk", "lost: chunk without a signature", lost},
    {"damage", "damaged bytes", bytes},
    {"free_record", "free space: records that are not live", free},
    {"free_record_part", "free space: the same, read in part", free},
    {"free_copy", "free space: copies of live records", free},
    {"free_data", "free space: other bytes", bytes},
    {"free_zero", "free space: zeros", bytes},
    {"foreign_chunk", "chunks without a signature", bytes},
    {"empty_chunk", "empty chunks", bytes},
    {"tail", "after the last whole chunk", bytes},
    {"unread_part", "could not be read from the file", bytes},
    {"carved_record", "records outside whole chunks", living},
    {"carved_legacy", "legacy records", living},
    {"carved_header", "headers of cut chunks", bytes},
    {"other_bytes", "bytes that are no log", bytes},
    {"read_elsewhere", "read from inside other bytes", free},
};

const area_row& row_of(area_kind kind) { return rows[static_cast<std::size_t>(kind)]; }

}  // namespace

std::string_view area_name(area_kind kind) { return row_of(kind).name; }
std::string_view area_text(area_kind kind) { return row_of(kind).text; }
bool holds_records(area_kind kind) { return row_of(kind).role != bytes; }
bool is_lost(area_kind kind) { return row_of(kind).role == lost; }
bool is_free_record(area_kind kind) {
  return row_of(kind).role == free && kind != area_kind::read_elsewhere;
}

bool all_zero(std::span<const std::byte> bytes) {
  if (bytes.empty()) return true;
  return bytes[0] == std::byte{0} &&
         std::memcmp(bytes.data(), bytes.data() + 1, bytes.size() - 1) == 0;
}

}  // namespace zanvik
