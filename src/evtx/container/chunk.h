// A chunk as the record decoders see it, and the layout of the .evtx container.
//
// Layout, all integers little-endian: a file header of 4,096 bytes whose first 8 are "ElfFile\0";
// then chunks of 65,536 bytes, each with a header of 512 bytes ("ElfChnk\0", record numbers, 64
// string offsets, 32 template offsets) followed by records, each of 24 bytes of header, binary XML
// and a copy of its size. Offsets in binary XML count from the chunk's first byte.
#pragma once

#include <cstdint>
#include <limits>
#include <span>

#include "base/byte_cursor.h"
#include "base/limits.h"

namespace zanvik {

namespace evtx_layout {
inline constexpr std::uint64_t file_header_bytes = 4096;
inline constexpr std::uint64_t chunk_bytes = 65536;
inline constexpr std::uint64_t chunk_header_bytes = 512;
inline constexpr std::uint64_t block_bytes = 50 * chunk_bytes;        // read at a time
inline constexpr std::uint64_t file_signature = 0x00656c6946666c45;   // "ElfFile\0"
inline constexpr std::uint64_t chunk_signature = 0x006b6e6843666c45;  // "ElfChnk\0"
inline constexpr std::uint64_t last_record_at = 16;  // all ones: the chunk has no records
inline constexpr std::uint64_t first_logical_record_at = 24;
inline constexpr std::uint64_t nth_logical_record_at = 32;
inline constexpr std::uint64_t string_table_at = 128;
inline constexpr std::uint32_t string_table_slots = 64;
inline constexpr std::uint64_t template_table_at = 384;
inline constexpr std::uint32_t template_table_slots = 32;

inline constexpr std::uint32_t record_signature = 0x00002a2a;
inline constexpr std::uint64_t record_header_bytes = 24;
inline constexpr std::uint32_t record_size_min = 10;
inline constexpr std::uint32_t record_size_max = 65536;

// Template instance with its fragment header, and the same without it.
inline constexpr std::uint32_t fragment_instance_bytes = 14;
inline constexpr std::uint32_t bare_instance_bytes = 10;
// Template definition: link word, GUID at 4, size of the body at 20, body at 24.
inline constexpr std::uint64_t definition_guid_at = 4;
inline constexpr std::uint64_t definition_size_at = 20;
inline constexpr std::uint32_t definition_head_bytes = 24;
}  // namespace evtx_layout

class bxml_memory;

// The work that the records of one chunk may still cause, in bytes (see limits.h).
struct work_budget {
  std::int64_t slot_bytes = limits::slot_bytes_per_chunk;
  std::int64_t plain_bytes = limits::plain_bytes_per_chunk;
  std::int64_t slack_bytes = limits::slack_bytes_per_chunk;
  std::int64_t body_bytes = limits::body_bytes_per_chunk;
  std::int64_t layout_bytes = limits::layout_bytes_per_chunk;

  // For work that was charged to another budget.
  static work_budget unlimited() {
    constexpr auto most = std::numeric_limits<std::int64_t>::max();
    return {most, most, most, most, most};
  }

  // Takes `bytes` from one of them; false when it is used up.
  static bool spend(std::int64_t& left, std::uint64_t bytes) {
    left = bytes > static_cast<std::uint64_t>(left) ? 0 : left - static_cast<std::int64_t>(bytes);
    return left > 0;
  }
};

// A chunk in its block. `bytes` is from the chunk's first byte to the end of the block, so a read
// may leave the chunk but never the block. `bound` is the size of the whole block; offsets in
// binary XML are compared with it. It is more than can be read in any chunk but the first: an
// offset in between passes its bound and then finds nothing.
struct chunk_view {
  byte_cursor bytes;
  std::uint64_t bound = 0;
  std::uint64_t file_offset = 0;  // of the chunk
  work_budget* budget = nullptr;  // never null while records are decoded
  bxml_memory* memory = nullptr;  // never null either
  bool full_sids = false;         // how SIDs are shown, see reader_options
};

}  // namespace zanvik
