// The logs of a run by name, and how a log gets its kind and its channel: from the file name if
// that is a well-known one, otherwise from the first record. Nothing here prints; a file that is
// too short, unreadable or of neither kind is not recognised.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <span>
#include <string>

#include "events/log_source.h"
#include "evtx/channel_finder.h"
#include "run/log_file.h"

namespace zanvik {

struct LogEntry {
  std::string path;             // as given, after environment references
  bool is_evtx = true;          // otherwise the legacy kind
  bool unclassified = true;     // no signature was recognised
  std::uint64_t reserved = 0;   // stays 0; timelines show it as the inode
  std::string channel = "unk";  // lower case; reports test it
};

// What classification keeps for later logs, and the file of the log that it opened last.
struct log_probe {
  channel_finder channels;
  log_file file;
};

inline log_source source_of(const LogEntry& entry) {
  log_source source;
  source.path = entry.path;
  source.channel = entry.channel;
  source.kind = entry.is_evtx ? log_kind::evtx : log_kind::evt;
  source.inode = entry.reserved;
  return source;
}

// By path as given, so that a run reads its logs in the order of their paths.
using log_map = std::map<std::string, LogEntry>;

// Whether a file that starts with these bytes counts as a log of either kind.
inline constexpr std::size_t log_signature_bytes = 8;
[[nodiscard]] bool has_log_signature(std::span<const std::byte> head);

// Fills `entry` for the log at `path` and returns true if it is one. `entry` may have been used for
// another log: what a failure leaves undecided keeps its value. The file stays open in `probe`; a
// run has one.
[[nodiscard]] bool classify_log(LogEntry& entry, const std::string& path, log_probe& probe);

// The same for a log whose first bytes `head` returns: as many as requested, fewer if the log has
// no more.
using head_reader = std::function<std::span<const std::byte>(std::size_t count)>;
[[nodiscard]] bool classify_log(LogEntry& entry, const std::string& path, channel_finder& channels,
                                const head_reader& head);

// Adds the logs of a `-log` value to `table`, recognised or not; of equal paths the first is kept.
// `scratch` is used for each of them in turn.
void add_logs(const std::string& value, LogEntry& scratch, log_probe& probe, log_map& table);

}  // namespace zanvik
