// The logs of a run by name, and how a log gets its kind and its channel: from the file name where
// that is one of the well-known ones, otherwise from the first record. Nothing here prints; a file
// that is too short, unreadable or of neither kind is simply not recognised.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <span>
#include <string>

#include "events/classified_log.h"
#include "evtx/channel_finder.h"
#include "run/log_file.h"

namespace zanvik {

struct LogEntry {
  std::string path;             // as given, after environment references
  bool is_evtx = true;          // otherwise the legacy kind
  bool unclassified = true;     // no signature was recognised
  std::uint64_t reserved = 0;   // stays 0; timelines show it as the inode
  std::string channel = "unk";  // lower case; reports go by it
};

// What classification keeps for the logs behind, and the file of the log that it opened last.
struct log_probe {
  channel_finder channels;
  log_file file;
};

inline classified_log source_of(const LogEntry& entry) {
  return {entry.path, entry.channel, entry.is_evtx, entry.reserved};
}

// By path as it stands, so that a run treats its logs in the order of their paths.
using log_map = std::map<std::string, LogEntry>;

// Whether a file that starts with these bytes is taken for a log, of either kind.
inline constexpr std::size_t log_signature_bytes = 8;
[[nodiscard]] bool has_log_signature(std::span<const std::byte> head);

// Fills `entry` for the log at `path` and returns true when it is one. `entry` may be one that
// served another log: what a failure leaves undecided keeps its value. The file stays open in
// `probe`, which is one for a run.
[[nodiscard]] bool classify_log(LogEntry& entry, const std::string& path, log_probe& probe);

// The same for a log whose first bytes `head` gives: as many as it is asked for, fewer where the
// log has no more.
using head_reader = std::function<std::span<const std::byte>(std::size_t count)>;
[[nodiscard]] bool classify_log(LogEntry& entry, const std::string& path, channel_finder& channels,
                                const head_reader& head);

// Enters the logs that a `-log` value names into `table`, recognised or not; of equal paths the
// first stays. `scratch` serves each of them in turn.
void add_logs(const std::string& value, LogEntry& scratch, log_probe& probe, log_map& table);

}  // namespace zanvik
