// What a walk over an .evtx log could not read, for the one line in which a verb reports it. The
// ledger of `check` has each place and what it may mean.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>

#include "evtx/evtx.h"

namespace zanvik {

// Of a log, or of a part of it.
struct log_losses {
  std::uint64_t records = 0;
  std::uint64_t chunks = 0;  // without a signature, or cut
  bool has_chunk = false;    // a whole one, even if it is empty; true for logs without chunks
  bool unread = false;       // bytes could not be read from the file

  void add(const log_losses& next);
  // "2 chunks and 15 declared records cannot be read …", or empty when all was read.
  std::string report() const;
};

// Counts the records that chunks declare and the walk does not reach, and passes everything on.
class loss_counter : public chunk_visitor {
 public:
  explicit loss_counter(chunk_visitor& reader) : reader_(reader) {}

  // A block of the log, which starts where a chunk may start, before it is walked.
  void start_block(std::span<const std::byte> block);

  void start_chunk(std::span<const std::byte> bytes, std::uint64_t bound,
                   std::uint64_t file_offset) override;
  bool on_record(std::uint64_t offset) override;
  void on_slack_candidate(std::uint64_t offset, std::uint64_t area_bytes) override;

  // After the last block.
  log_losses finish();

 private:
  void end_chunk();

  chunk_visitor& reader_;
  std::uint64_t declared_ = 0;  // records of the chunk in hand
  std::uint64_t reached_ = 0;
  log_losses lost_;
};

}  // namespace zanvik
