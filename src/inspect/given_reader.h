// The records that the reader returns from a block, so that the ledger can compare them with its
// own walk. It is the reader of all verbs, used in the same way.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "events/evtx_events.h"
#include "inspect/chunk_settle.h"

namespace zanvik {

class given_reader {
 public:
  // `source` is the log's, `events` gets its live events; both must outlive this.
  given_reader(const log_source& source, event_sink& events);

  // Reads a block of whole chunks at `offset` of the file; one list for each of its chunks, in
  // order, valid until the next call. The bytes may be changed by the search of slack.
  std::span<const given_records> read(std::span<std::byte> block, std::uint64_t offset);

 private:
  // Notes the place of each event; live ones are passed on.
  class noting_sink : public event_sink {
   public:
    explicit noting_sink(event_sink& events) : events_(events) {}
    void on_event(const event_view& event) override;

    bool slack = false;
    std::uint64_t block_offset = 0;
    std::vector<given_records> given;

   private:
    event_sink& events_;
  };

  void walk(std::span<std::byte> chunks, std::uint64_t offset, bool slack);

  noting_sink sink_;
  evtx_event_reader reader_;
};

}  // namespace zanvik
