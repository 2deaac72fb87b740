#include "evt/part_walk.h"

#include <algorithm>

#include "base/limits.h"

namespace zanvik {
namespace {

namespace layout = evt_layout;

constexpr std::uint64_t scan_step = 4;
// Texts may end this far behind their record: up to 1,024 strings, each one unit too far, and the
// search for the end of the last one.
constexpr std::uint64_t reach_behind = 8192;

}  // namespace

bool evt_part_walk::start(const byte_cursor& bytes) {
  started_ = true;
  if (bytes.at<std::uint32_t>(layout::signature_at) != layout::signature) return false;
  // As in walk_evt_log, the header's length is taken as it stands.
  at_ = bytes.at_or_zero<std::uint32_t>(0);
  return true;
}

void evt_part_walk::walk(std::span<const std::byte> part, std::uint64_t begin, bool last) {
  const byte_cursor bytes(part);
  if (!started_) {
    if (!last && !bytes.has(0, layout::record_head_bytes)) return;
    is_log_ = start(bytes);
  }
  while (is_log_ && !cut_ && bytes.has(at_ - begin, layout::record_head_bytes)) {
    const std::uint64_t at = at_ - begin;
    const auto length = bytes.at_or_zero<std::uint32_t>(at);
    const auto signature = bytes.at_or_zero<std::uint32_t>(at + layout::signature_at);
    if (signature == layout::signature && !take_record(bytes, at, begin, last)) break;
    const bool known = signature == layout::signature || signature == layout::cursor_signature;
    at_ += known && length != 0 ? length : scan_step;
  }
  if (is_log_ && (cut_ || last)) count_lost(bytes, begin);
}

// What is left when no more records are handed on: it may be longer than a window, or less than the
// head of a record.
void evt_part_walk::count_lost(const byte_cursor& bytes, std::uint64_t begin) {
  for (; bytes.has(at_ - begin, 2 * scan_step); at_ += scan_step) {
    const std::uint64_t at = at_ - begin;
    if (bytes.at_or_zero<std::uint32_t>(at + layout::signature_at) == layout::signature &&
        bytes.at_or_zero<std::uint32_t>(at) >= layout::record_head_bytes) {
      ++lost_;
    }
  }
}

bool evt_part_walk::take_record(const byte_cursor& bytes, std::uint64_t at, std::uint64_t begin,
                                bool last) {
  const std::uint64_t length = bytes.at_or_zero<std::uint32_t>(at);
  const bool out_of_log = log_bytes_ != 0 && at_ + length > log_bytes_;
  if (out_of_log || (last && !bytes.has(at, length))) {
    cut_ = true;  // even with more records behind it, as in walk_evt_log
    return false;
  }
  if (length > limits::evt_record_bytes) {
    ++lost_;
    return true;
  }
  if (!last && !bytes.has(at, length + reach_behind)) return false;
  const std::uint64_t known_bytes = std::max(log_bytes_, begin + bytes.size());
  const std::int64_t allowed = limits::evt_text_budget(known_bytes);
  std::int64_t left = allowed - text_spent_;
  parse_evt_record(bytes, at, record_, left);
  text_spent_ = allowed - left;
  sink_.on_record(record_);
  return true;
}

}  // namespace zanvik
