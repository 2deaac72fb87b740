// The ledger of an .evtx log, made while its bytes are read.
//
// In: the file header, blocks of whole chunks in the order of the file, and what follows them. Out:
// a log_ledger in which every byte has its line. Between blocks it keeps a few words for each
// chunk, a hash for each record, and the records of free space.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "inspect/chunk_order.h"
#include "inspect/given_reader.h"
#include "inspect/log_ledger.h"
#include "inspect/record_sequence.h"

namespace zanvik {

class evtx_ledger {
 public:
  // `latest` as for record_sequence. All of them must outlive this.
  evtx_ledger(log_ledger& out, const log_source& source, event_sink& events, std::uint64_t latest);

  // The first 4,096 bytes of the file, or as many as there are.
  void add_header(std::span<const std::byte> header);
  // The bytes from `offset` on: whole chunks, and in the last block what follows them.
  void add_block(std::span<std::byte> block, std::uint64_t offset);
  // Bytes that could not be read.
  void add_unread(std::uint64_t offset, std::uint64_t size);
  void finish();

  const record_sequence& sequence() const { return sequence_; }
  // The lowest number of a live record; 0 if there is none.
  std::uint64_t first_number() const;

 private:
  // A record of free space; whether it is a copy is known only at the end.
  struct free_candidate {
    area part;
    std::size_t chunk = 0;  // index into the summaries
  };

  void add_chunk(std::span<const std::byte> bytes, std::size_t position, const walked_chunk& chunk);
  void add_area(const area& part, std::size_t chunk);
  void count_declared(const walked_chunk& chunk);
  void settle_free_records();
  void excuse_open_log();

  log_ledger& out_;
  record_sequence sequence_;
  chunk_walk walk_;
  given_reader reader_;
  std::vector<walked_chunk> walked_;  // of the block in hand
  std::vector<chunk_ends> ends_;
  std::vector<std::uint64_t> living_;  // hashes, sorted at the end
  std::vector<free_candidate> free_;
  std::optional<header_claims> claims_;
  bool open_ = false;  // the header says that the log was not closed
};

}  // namespace zanvik
