// The lines of the account: the kinds of a log's bytes. Each byte is of one kind.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

namespace zanvik {

enum class area_kind : std::uint8_t {
  file_header,
  chunk_header,
  end_record,        // of a legacy log
  record_read,       // a living record that the reader gives whole
  record_outside,    // the same, with a number that its chunk (or legacy log) does not declare
  record_bare,       // read without its template, so without names
  record_part,       // read in part: its content breaks off, or goes over a limit
  lost_cut,          // a record whose size leads out of its chunk or file
  wrapped_rest,      // of a legacy record that goes on at the front of the log
  lost_size,         // one whose size is less than a record's least
  lost_behind,       // a sound one behind damage, where the reader's walk stops
  lost_undeclared,   // a sound one beyond the count that the chunk declares
  lost_chunk,        // a sound one in a chunk whose signature is gone
  damage,            // in the used part of a chunk, and no record
  free_record,       // behind the used part: a record that is not among the living
  free_record_part,  // the same, read in part or without its template
  free_copy,         // the same as a living record
  free_data,         // other bytes behind the used part
  free_zero,         // zeros there
  foreign_chunk,     // a chunk without its signature
  empty_chunk,       // a chunk of zeros
  tail,              // behind the last whole chunk
  unread_part,       // the file could not be read there
  carved_record,     // outside whole chunks, found by its signature
  carved_legacy,     // the same, of a legacy log
  carved_header,     // of a chunk that is cut or damaged
  other_bytes,       // of an input that is no log
  read_elsewhere,    // no bytes of its own: what the reader gives from inside other areas
};
inline constexpr std::size_t area_kinds = static_cast<std::size_t>(area_kind::read_elsewhere) + 1;

// The name for programs ("lost_cut") and the words for people.
std::string_view area_name(area_kind kind);
std::string_view area_text(area_kind kind);
// Whether areas of that kind are records, and are counted.
bool holds_records(area_kind kind);
// Whether they are live records that the reader does not return.
bool is_lost(area_kind kind);
// Whether they are records after the used part.
bool is_free_record(area_kind kind);

// A range of bytes of one kind.
struct area {
  std::uint64_t offset = 0;  // in its chunk or, of a legacy log, in the file
  std::uint64_t size = 0;
  area_kind kind = area_kind::damage;
  std::uint64_t number = 0;        // of a record
  std::uint64_t time_written = 0;  // of a record, FILETIME
};

// True if all of them are zero.
bool all_zero(std::span<const std::byte> bytes);

}  // namespace zanvik
