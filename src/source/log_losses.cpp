#include "source/log_losses.h"

#include <algorithm>
#include <string_view>

#include "base/byte_cursor.h"

namespace zanvik {
namespace {

namespace layout = evtx_layout;

constexpr std::uint64_t no_records = ~std::uint64_t{0};
// What a chunk may declare: no more than have room in it.
constexpr std::uint64_t most_records = layout::chunk_bytes / layout::record_header_bytes;

bool is_zero(std::span<const std::byte> bytes) {
  return std::all_of(bytes.begin(), bytes.end(), [](std::byte b) { return b == std::byte{0}; });
}

std::string counted(std::uint64_t count, std::string_view what) {
  return std::to_string(count) + " " + std::string(what) + (count == 1 ? "" : "s");
}

}  // namespace

void loss_counter::start_block(std::span<const std::byte> block) {
  const byte_cursor bytes(block);
  for (std::uint64_t at = 0; at < block.size(); at += layout::chunk_bytes) {
    const std::uint64_t size = std::min<std::uint64_t>(layout::chunk_bytes, block.size() - at);
    const bool whole = size == layout::chunk_bytes;
    lost_.has_chunk = lost_.has_chunk || whole;
    if (whole && bytes.at<std::uint64_t>(at) == layout::chunk_signature) continue;
    if (!is_zero(bytes.bytes_at(at, size))) ++lost_.chunks;  // zeros are a chunk without use
  }
}

void loss_counter::start_chunk(std::span<const std::byte> bytes, std::uint64_t bound,
                               std::uint64_t file_offset) {
  end_chunk();
  const byte_cursor chunk(bytes);
  const auto first = chunk.at_or_zero<std::uint64_t>(layout::first_logical_record_at);
  const auto last = chunk.at_or_zero<std::uint64_t>(layout::nth_logical_record_at);
  const bool empty = chunk.at_or_zero<std::uint64_t>(layout::last_record_at) == no_records;
  if (!empty && first <= last) declared_ = std::min(last - first, most_records - 1) + 1;
  reader_.start_chunk(bytes, bound, file_offset);
}

bool loss_counter::on_record(std::uint64_t offset) {
  ++reached_;
  return reader_.on_record(offset);
}

void loss_counter::on_slack_candidate(std::uint64_t offset, std::uint64_t area_bytes) {
  reader_.on_slack_candidate(offset, area_bytes);
}

void loss_counter::end_chunk() {
  if (declared_ > reached_) lost_.records += declared_ - reached_;
  declared_ = reached_ = 0;
}

log_losses loss_counter::finish() {
  end_chunk();
  return lost_;
}

void log_losses::add(const log_losses& next) {
  records += next.records;
  chunks += next.chunks;
  has_chunk = has_chunk || next.has_chunk;
  unread = unread || next.unread;
}

std::string log_losses::report() const {
  if (unread) return "a part could not be read";
  if (!has_chunk && chunks == 0) return "the log holds no chunk";
  std::string text;
  if (chunks != 0) text = counted(chunks, "chunk");
  if (records != 0) text += (text.empty() ? "" : " and ") + counted(records, "declared record");
  return text.empty() ? text : text + " cannot be read; `zanvik check` shows where";
}

}  // namespace zanvik
