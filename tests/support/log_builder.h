// A whole .evtx log from its chunks:
//
//   auto log = log_builder().chunk({record(7), record(8)}).chunk({record(9)});
//   log.poke_u32(log.record_offset(0, 1) + 4, 9);
//
// In: chunks. Out: a file header of 4,096 bytes and the chunks, valid until a test damages it.
// Damage is done to the finished bytes, and no CRC is corrected afterwards unless requested.
#pragma once

#include <vector>

#include "chunk_builder.h"
#include "event_builder.h"

namespace zanvik::testing {

inline constexpr std::size_t file_header_bytes = 4096;

class log_builder : public file_bytes {
 public:
  log_builder();

  log_builder& chunk(const chunk_builder& chunk);

  // Offsets in the file; chunks and records count from 0, slack records after the declared ones.
  std::size_t chunk_offset(std::size_t chunk) const;
  std::size_t record_offset(std::size_t chunk, std::size_t record) const;
  // The record's binary XML.
  std::size_t content_offset(std::size_t chunk, std::size_t record) const {
    return record_offset(chunk, record) + 24;
  }

 private:
  void write_header();

  std::vector<std::size_t> chunk_offsets_;
  std::vector<std::vector<std::size_t>> record_offsets_;  // in the file
  std::uint64_t next_number_ = 1;
};

}  // namespace zanvik::testing
