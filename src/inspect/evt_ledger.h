// The ledger of a legacy .evt log, which is one ring of records behind a header of 48 bytes.
//
// In: the bytes of the whole log. Out: a log_ledger in which every byte has its line. Live records
// are those between the offsets in the end-of-file record, or in the header if there is none;
// others were released, but are still in the file and are read like them: they count as outside the
// declared ones. A record that reaches past the file's end continues after the header; the reader
// does not follow it there, so it is lost.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "base/byte_cursor.h"
#include "inspect/log_ledger.h"
#include "inspect/record_sequence.h"

namespace zanvik {

class finding_runs;

class evt_ledger {
 public:
  // `latest` as for record_sequence. `out` must outlive this.
  evt_ledger(log_ledger& out, std::uint64_t latest) : out_(out), sequence_(out.findings, latest) {}

  // `given` are the offsets of the records that the reader returns, ascending.
  void run(std::span<const std::byte> log, std::span<const std::uint64_t> given);

  const record_sequence& sequence() const { return sequence_; }

 private:
  // Where the records are, by the header or by the end-of-file record.
  struct ring_claims {
    std::uint64_t begin = 0, end = 0;  // offsets in the file
    std::uint64_t next_number = 0, oldest = 0;
    bool operator==(const ring_claims&) const = default;
  };

  void read_header();
  void walk(std::span<const std::byte> log);
  std::uint64_t take_record(std::uint64_t at);
  std::uint64_t next_place(std::uint64_t from) const;
  bool is_end_record(std::uint64_t at) const;
  void join_wrapped_record();
  void settle(std::span<const std::uint64_t> given);
  void check_ring();
  void read_end_record();
  void check_record(const area& part, finding_runs& unread);
  void check_sequence();
  void count_declared();
  bool is_living(std::uint64_t offset) const;
  void find(finding_kind kind, const area& part, std::string detail);

  log_ledger& out_;
  record_sequence sequence_;
  byte_cursor log_;
  ring_claims header_;
  ring_claims claims_;  // what counts
  bool open_ = false;
  bool wrapped_ = false;  // the last record goes on behind the header
  std::vector<area> areas_;
  std::vector<std::uint64_t> end_records_;  // offsets
};

}  // namespace zanvik
