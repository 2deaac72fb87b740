#include "source/log_events.h"

#include <algorithm>
#include <utility>
#include <vector>

#include "source/block_reader.h"
#include "source/carver.h"
#include "source/evt_windows.h"

namespace zanvik {
namespace layout = evtx_layout;

bool read_log_blocks(const found_log& log, const block_use& use) {
  return read_blocks(log, first_chunk_offset(log), layout::block_bytes, use);
}

std::uint64_t first_chunk(std::span<const std::byte> block) {
  const byte_cursor bytes(block);
  std::uint64_t at = 0;
  while (at < block.size() && bytes.at<std::uint64_t>(at) != layout::chunk_signature) {
    at += layout::chunk_bytes;
  }
  return std::min<std::uint64_t>(at, block.size());
}

bool log_event_reader::read(const found_log& log) {
  // The caller's log outlives the parts.
  const std::shared_ptr<const found_log> borrowed(std::shared_ptr<void>(), &log);
  log_losses lost;
  cut_log(borrowed, memory_, [&](log_part&& part) {
    lost.add(read(part));
    if (!part.bytes.empty()) memory_.give_back(std::move(part.bytes));
  });
  problem_ = lost.report();
  return problem_.empty();
}

log_losses log_event_reader::read(log_part& part) {
  if (part.is_block) return read_block(part);
  if (!part.log->carve) return read_evt(*part.log);
  log_losses lost;
  lost.has_chunk = true;
  lost.unread = !carve(*part.log);
  return lost;
}

log_losses log_event_reader::read_block(log_part& part) {
  const found_log& log = *part.log;
  evtx_.set_source(log.source);
  evtx_.set_flags(log.source.deleted ? std::uint32_t{event_deleted} : 0);
  walk_settings settings;
  settings.inc_slack = slack_;
  settings.inside_records = slack_;
  loss_counter losses(evtx_);
  bool unread = part.unread;
  const std::span<std::byte> block = bytes_of(part, unread);
  if (!block.empty()) {
    losses.start_block(block);
    const std::uint64_t skip = first_chunk(block);
    walk_evtx_block(block.subspan(skip), part.offset + skip, losses, settings);
  }
  if (on_progress) on_progress(part.offset + part.size);
  log_losses lost = losses.finish();
  lost.unread = unread;
  return lost;
}

// The bytes of the block, which a walk may change: those of the part, or the file's.
std::span<std::byte> log_event_reader::bytes_of(log_part& part, bool& unread) {
  if (!part.bytes.empty()) return {part.bytes.data(), part.size};
  if (part.size == 0) return {};
  if (block_.size() < part.size) block_.resize(part.size);
  const ssize_t got = read_fully(*part.log, std::span(block_).first(part.size), part.offset);
  const auto bytes = static_cast<std::size_t>(std::max<ssize_t>(got, 0));
  unread = unread || bytes != part.size;
  return std::span(block_).first(bytes);
}

log_losses log_event_reader::read_evt(const found_log& log) {
  evt_.set_source(log.source);
  evt_.set_flags(log.source.deleted ? std::uint32_t{event_deleted} : 0);
  return walk_evt_windows(log, evt_, [&](std::span<const std::byte> window, std::uint64_t offset) {
    evt_.set_buffer(offset, window.data() + window.size());
    if (on_progress) on_progress(offset + window.size());
  });
}

bool log_event_reader::carve(const found_log& log) {
#ifdef ZANVIK_ZLIB
  carver work(sink_, log.source, slack_);
  work.take_event_ids(event_ids_);
  const bool whole = read_into(
      log,
      [&](std::uint64_t offset) {
        if (on_progress) on_progress(offset);
        return work.room(offset);
      },
      [&](std::size_t bytes) { work.take(bytes); });
  return work.finish() && whole;
#else
  (void)log;
  return false;
#endif
}

}  // namespace zanvik
