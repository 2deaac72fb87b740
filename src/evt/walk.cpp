#include "base/limits.h"
#include "evt/evt.h"

namespace zanvik {
namespace {

namespace layout = evt_layout;

// How far a scan moves if no length says more.
constexpr std::uint64_t scan_step = 4;

std::uint64_t step_of(std::uint32_t length) { return length != 0 ? length : scan_step; }

}  // namespace

bool walk_evt_log(std::span<const std::byte> log, evt_sink& sink) {
  const byte_cursor bytes(log);
  if (bytes.at<std::uint32_t>(layout::signature_at) != layout::signature) return false;
  std::int64_t text_budget = limits::evt_text_budget(log.size());
  evt_record record;
  // The header's length is used as it is: 0 makes the header itself the first record.
  std::uint64_t offset = bytes.at_or_zero<std::uint32_t>(0);
  while (bytes.has(offset, layout::record_head_bytes)) {
    const auto length = bytes.at_or_zero<std::uint32_t>(offset);
    const auto signature = bytes.at_or_zero<std::uint32_t>(offset + layout::signature_at);
    if (signature == layout::signature) {
      // A record that reaches past the file ends the walk, even if more records follow.
      if (!bytes.has(offset, length)) break;
      parse_evt_record(bytes, offset, record, text_budget);
      sink.on_record(record);
      offset += step_of(length);
    } else if (signature == layout::cursor_signature) {
      offset += step_of(length);
    } else {
      offset += scan_step;
    }
  }
  return true;
}

}  // namespace zanvik
