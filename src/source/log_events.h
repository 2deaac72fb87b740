// The events of a log, whatever kind it is: the way into this folder.
//
//   log_finder.h    logs in files, folders and standard input
//   block_reader.h  their bytes, a block at a time
//   log_parts.h     parts of logs, for several threads
//   evt_windows.h   a legacy log, a window at a time
//   log_losses.h    what could not be read of a log
//   carver.h        events in bytes that are no log
#pragma once

#include <span>
#include <string>
#include <vector>

#include "events/evt_events.h"
#include "events/evtx_events.h"
#include "source/block_reader.h"
#include "source/log_finder.h"
#include "source/log_losses.h"
#include "source/log_parts.h"

namespace zanvik {

// The first offset in `block`, by whole chunks, where a chunk has its signature; the block's size
// when there is none. Walks begin there, so that a damaged chunk does not cost those behind it.
std::uint64_t first_chunk(std::span<const std::byte> block);

// Hands out an .evtx log in blocks of whole chunks. Returns false when a part could not be read.
bool read_log_blocks(const found_log& log, const block_use& use);

// Reads logs one after the other; what is learnt of templates serves all of them.
class log_event_reader {
 public:
  // `slack`: records from free space too. The sink must outlive the reader.
  log_event_reader(event_sink& sink, bool slack)
      : sink_(sink), evtx_(sink), evt_(sink), slack_(slack) {}

  // Told how many bytes of a log are read.
  std::function<void(std::uint64_t)> on_progress;

  // Events with other ids may be left out early: a hint, which spares the reading of most of them.
  void take_event_ids(const event_id_set* ids) {
    event_ids_ = ids;
    evtx_.take_event_ids(ids);
  }

  // Hands on the events of the log. False when a part of it could not be read.
  bool read(const found_log& log);
  // What could not be read of the last log; empty when all was.
  const std::string& problem() const { return problem_; }
  // Hands on the events of a part; its bytes may be changed. Returns what could not be read.
  log_losses read(log_part& part);

 private:
  log_losses read_block(log_part& part);
  std::span<std::byte> bytes_of(log_part& part, bool& unread);
  log_losses read_evt(const found_log& log);
  bool carve(const found_log& log);

  event_sink& sink_;
  const event_id_set* event_ids_ = nullptr;
  evtx_event_reader evtx_;
  evt_event_reader evt_;
  bool slack_;
  block_memory memory_;           // for `read` of a whole log
  std::vector<std::byte> block_;  // of a file
  std::string problem_;
};

}  // namespace zanvik
