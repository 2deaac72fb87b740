#include "inspect/inspect_log.h"

#include <sys/stat.h>

#include <algorithm>
#include <vector>

#include "base/stop_signal.h"
#include "base/time_value.h"
#include "evt/part_walk.h"
#include "evtx/container/chunk.h"
#include "inspect/carve_ledger.h"
#include "inspect/checksum.h"
#include "inspect/event_facts.h"
#include "inspect/evt_ledger.h"
#include "inspect/evtx_ledger.h"
#include "source/block_reader.h"
#include "source/log_events.h"

namespace zanvik {
namespace {

namespace layout = evtx_layout;

// Copies may have the date of another time zone; a day covers all of them.
constexpr std::uint64_t date_slack = qx::ticks_per_day;

// A time after which no record of the file can have been written; 0 if the file has no date.
std::uint64_t latest_time(const found_log& log) {
  struct stat state {};
  std::int64_t modified = log.modified;
  if (log.is_stream) return 0;
  if (!log.read_at && ::fstat(log.descriptor, &state) == 0) modified = state.st_mtime;
  if (modified <= 0) return 0;
  const auto seconds = static_cast<std::uint64_t>(modified);
  return qx::time(seconds, qx::type_time::unix_time).filetime() + date_slack;
}

// Bytes of an .evtx log on their way into its ledger.
class evtx_feed {
 public:
  evtx_feed(const found_log& log, log_ledger& out)
      : log_(log), out_(out), facts_(out), ledger_(out, log.source, facts_, latest_time(log)) {}

  void run() {
    if (log_.is_stream) {
      read_stream();
    } else {
      read_file();
    }
    ledger_.finish();
    add_times(out_, ledger_.sequence());
    facts_.finish(ledger_.sequence().jumps(), ledger_.first_number());
    if (whole_) out_.sha256 = sum_.finish();
  }

  static void add_times(log_ledger& out, const record_sequence& sequence) {
    if (sequence.last_time() == 0) return;
    out.facts.push_back({"first_time", utc_text(sequence.first_time())});
    out.facts.push_back({"last_time", utc_text(sequence.last_time())});
  }

 private:
  void add(std::span<std::byte> bytes, std::uint64_t offset, bool header) {
    if (bytes.empty() && !header) return;
    sum_.add(bytes);
    if (header) {
      ledger_.add_header(bytes);
    } else {
      ledger_.add_block(bytes, offset);
    }
  }
  void unread(std::uint64_t offset, std::uint64_t size) {
    whole_ = false;
    ledger_.add_unread(offset, size);
  }

  // A log that has lost its file header begins with a chunk.
  static bool has_header(std::span<const std::byte> head) {
    return byte_cursor(head).at<std::uint64_t>(0) != layout::chunk_signature;
  }

  // The header, then blocks; where a block breaks off, reading continues after the next chunk.
  void read_file() {
    std::vector<std::byte> block(layout::block_bytes);
    std::byte first[8];
    const ssize_t got_first = read_fully(log_, first, 0);
    bool header = got_first != std::ssize(first) || has_header(first);
    for (std::uint64_t at = 0; at < log_.size && stop_signal() == 0;) {
      const std::uint64_t piece = header ? layout::file_header_bytes : layout::chunk_bytes;
      const std::uint64_t most = header ? piece : layout::block_bytes;
      const std::uint64_t wanted = std::min(most, log_.size - at);
      const ssize_t got = read_fully(log_, std::span(block).first(wanted), at);
      std::uint64_t count = static_cast<std::uint64_t>(std::max<ssize_t>(got, 0));
      const bool all = count == wanted;
      if (!all) count -= count % piece;
      add(std::span(block).first(count), at, header);
      at += count;
      if (!all) {
        const std::uint64_t lost = std::min(piece, log_.size - at);
        unread(at, lost);
        at += lost;
      }
      header = false;
    }
  }

  void read_stream() {
    std::uint64_t begin = 0;
    if (has_header(log_.head)) {
      begin = std::min<std::uint64_t>(layout::file_header_bytes, log_.head.size());
      std::vector<std::byte> header(log_.head.begin(), log_.head.begin() + std::ptrdiff_t(begin));
      add(header, 0, true);
    }
    out_.size = begin;
    const auto use = [this](std::span<std::byte> block, std::uint64_t offset) {
      out_.size = offset + block.size();
      add(block, offset, false);
    };
    if (!read_blocks(log_, begin, layout::block_bytes, use)) unread(out_.size, 0);
  }

  const found_log& log_;
  log_ledger& out_;
  event_facts facts_;
  evtx_ledger ledger_;
  sha256 sum_;
  bool whole_ = true;
};

// Notes where the events of a legacy log are, and passes them on.
class offset_sink : public event_sink {
 public:
  explicit offset_sink(event_sink& events) : events_(events) {}
  void on_event(const event_view& event) override {
    offsets.push_back(event.header().file_offset);
    events_.on_event(event);
  }
  std::vector<std::uint64_t> offsets;

 private:
  event_sink& events_;
};

void inspect_evt(const found_log& log, log_ledger& out) {
  std::vector<std::byte> bytes;
  const bool whole = read_blocks(log, 0, layout::block_bytes,
                                 [&](std::span<std::byte> block, std::uint64_t offset) {
                                   bytes.resize(offset);
                                   bytes.insert(bytes.end(), block.begin(), block.end());
                                 });
  if (log.is_stream) out.size = bytes.size();
  if (bytes.size() < out.size && whole) bytes.resize(out.size);  // it ends in a hole
  event_facts facts(out);
  offset_sink sink(facts);
  evt_event_reader reader(sink);
  reader.set_source(log.source);
  reader.set_buffer(0, bytes.data() + bytes.size());
  evt_part_walk(reader, bytes.size()).walk(bytes, 0, true);  // as export does
  evt_ledger ledger(out, latest_time(log));
  ledger.run(bytes, sink.offsets);
  if (bytes.size() < out.size || !whole) {
    out.account.add({0, out.size - bytes.size(), area_kind::unread_part});
    out.findings.add(finding_kind::unreadable, bytes.size(), "part of the file");
  }
  evtx_feed::add_times(out, ledger.sequence());
  facts.finish(ledger.sequence().jumps(), 0);
  sha256 sum;
  sum.add(bytes);
  if (whole) out.sha256 = sum.finish();
}

}  // namespace

void inspect_log(const found_log& log, log_ledger& out) {
  out.path = log.source.path;
  out.size = log.size;
  if (log.carve) {
    inspect_carved(log, out);
  } else if (log.source.kind == log_kind::evt) {
    inspect_evt(log, out);
  } else {
    evtx_feed(log, out).run();
  }
  out.findings.sort_by_offset();
}

}  // namespace zanvik
