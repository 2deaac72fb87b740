// Events from bytes that are not a log: an image, memory, free space, any file.
//
// In: bytes from start to end, read into the carver's own buffer. Out: events, each with its offset
// in the input and marked as carved. Chunks that are whole by structure and both checksums, and
// legacy records whose two sizes agree, come at once, in the order of the input. The rest of other
// chunks, and single records, come at the end, also in the order of the input: by then all
// templates in the input are known. A record without its template has its header and its values.
//
// The inside of a whole chunk is not searched. Memory is bounded (limits.h); work is in proportion
// to the input, even if its records overlap.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "events/evt_events.h"
#include "events/evtx_events.h"
#include "source/record_runs.h"

namespace zanvik {

// What was found, for those who want to know.
class carve_watcher {
 public:
  virtual ~carve_watcher() = default;
  virtual void on_chunk(std::span<const std::byte> chunk, std::uint64_t offset) = 0;
  // Records one behind the other, behind the header of their chunk when the run's place is 0.
  virtual void on_run(const record_run& run, std::span<const std::byte> bytes) = 0;
  virtual void on_legacy_record(std::span<const std::byte> record, std::uint64_t offset) = 0;
};

class carver {
 public:
  // `slack`: also records from the free space of whole chunks. All must outlive the carver.
  carver(event_sink& sink, const log_source& input, bool slack);

  // Events with other ids may be left out.
  void take_event_ids(const event_id_set* ids) { chunks_.take_event_ids(ids); }
  void set_watcher(carve_watcher* watcher) { watcher_ = watcher; }

  // Room for the bytes at `offset` of the input. Bytes that do not continue the previous ones are
  // treated as the start of something else.
  std::span<std::byte> room(std::uint64_t offset);
  // The room now contains this many bytes.
  void take(std::size_t bytes);
  // Passes on the rest. False if a record could not be kept for that.
  [[nodiscard]] bool finish();

 private:
  class no_sink : public event_sink {
    void on_event(const event_view&) override {}
  };
  // Where to continue after a hit; `more` if the bytes after it are not there yet.
  struct outcome {
    std::size_t next = 0;
    bool more = false;
  };

  void scan(bool last);
  outcome take_chunk(std::size_t at, bool last);
  outcome take_record(std::size_t at, bool last);
  outcome take_legacy(std::size_t at, bool last);
  bool is_whole_chunk(std::span<const std::byte> chunk);
  bool may_overlap(std::uint64_t size);
  bool append_to_run(std::uint64_t offset, std::span<const std::byte> record, std::uint32_t place);
  void keep_run(record_run run, std::span<const std::byte> bytes);
  void close_run();
  void read_run(evtx_event_reader& reader, const record_run& run, std::span<const std::byte> bytes,
                std::uint64_t credit);

  log_source source_;
  log_source legacy_source_;
  bool slack_;
  carve_watcher* watcher_ = nullptr;
  no_sink nobody_;
  template_library library_;
  evtx_event_reader chunks_;   // whole chunks, then runs
  evtx_event_reader learner_;  // reads runs for their templates
  evt_event_reader legacy_;
  evt_record legacy_record_;

  std::vector<std::byte> window_;  // bytes that are not done with
  std::size_t held_ = 0;           // bytes in it
  std::size_t next_ = 0;           // where the search continues
  std::uint64_t base_ = 0;         // offset of the window

  record_run run_;  // open; without bytes when none is
  std::vector<std::byte> run_bytes_;
  std::uint64_t legacy_end_ = 0;  // of the last legacy record
  run_store runs_;
  bool all_kept_ = true;
  std::uint64_t passed_ = 0;  // bytes of the input that were seen
  std::int64_t overlapped_ = 0;
  std::int64_t chunks_checked_ = 0;
  std::int64_t texts_read_ = 0;      // cost of legacy texts
  std::uint64_t learnt_ = 0;         // `passed_` when the learner read a run
  std::vector<std::byte> fragment_;  // all ones; a run is put into it to be read
};

}  // namespace zanvik
