// The ledger's own walk over one chunk: areas that follow each other without a gap from its first
// byte to its last, so that each byte is of one kind.
//
// In: the 65,536 bytes of a chunk. Out: the fields of its header, and areas in the order of their
// offsets, valid until the next walk. The used part ends where the header says that free space
// begins or, if that is impossible, after the last consecutive record. Records in the used part are
// `record_read` here, whatever a reader does with them (chunk_settle.h); after it they are
// `free_record`. Bytes that are not a record are searched for the next header, so that damage costs
// only itself. No byte is read more than a few times.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "base/byte_cursor.h"
#include "inspect/log_ledger.h"

namespace zanvik {

struct chunk_header {
  std::uint64_t first_in_file = 0, last_in_file = 0;  // counted in the file
  std::uint64_t first_number = 0, last_number = 0;    // as events show them
  std::uint32_t header_bytes = 0;
  std::uint32_t last_record_at = 0;
  std::uint32_t free_at = 0;
  std::uint32_t data_checksum = 0;
  std::uint32_t flags = 0;
  std::uint32_t header_checksum = 0;

  // Whether the header says that there are records.
  bool has_records() const { return last_number != ~std::uint64_t{0}; }
  bool declares(std::uint64_t number) const {
    return has_records() && number >= first_number && number <= last_number;
  }
  // How many it declares; nothing if no chunk can contain as many.
  std::optional<std::uint64_t> declared() const;
};

chunk_header read_chunk_header(std::span<const std::byte> chunk);
// The CRCs of the bytes as they are: of the header, and of the records up to `end`.
std::uint32_t header_checksum_of(std::span<const std::byte> chunk);
std::uint32_t data_checksum_of(std::span<const std::byte> chunk, std::uint64_t end);

// A record header as in a chunk.
struct record_head {
  std::uint32_t size = 0;
  std::uint64_t number = 0;
  std::uint64_t time_written = 0;
};
// Nothing without a signature, or without room for a header.
std::optional<record_head> record_head_at(const byte_cursor& chunk, std::uint64_t at);
// Whether the size is possible for a record at `at`, up to the chunk's end.
bool fits(const byte_cursor& chunk, std::uint64_t at, const record_head& head);
// The size at the record's end; nothing if the record does not fit.
std::optional<std::uint32_t> size_at_end(const byte_cursor& chunk, std::uint64_t at,
                                         const record_head& head);

struct walked_chunk {
  chunk_state state = chunk_state::sound;
  chunk_header header;
  std::uint64_t used_end = 0;  // where its free space begins
  std::vector<area> areas;
};

class chunk_walk {
 public:
  const walked_chunk& walk(std::span<const std::byte> chunk);

 private:
  std::uint64_t take_record(std::uint64_t at, bool used, const record_head& head);
  std::uint64_t take_gap(std::uint64_t at, std::uint64_t border, bool used);
  std::uint64_t end_of_row() const;
  std::uint64_t next_record(std::uint64_t from, std::uint64_t end) const;
  bool is_record(std::uint64_t at) const;

  byte_cursor chunk_;
  walked_chunk out_;
};

}  // namespace zanvik
