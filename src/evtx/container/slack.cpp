#include "evtx/container/slack.h"

#include "base/byte_search.h"
#include "base/time_value.h"
#include "evtx/container/chunk.h"

namespace zanvik {
namespace {

namespace layout = evtx_layout;

constexpr std::uint64_t least_area_bytes = 16;
constexpr std::uint64_t behind_signature = 8;

}  // namespace

bool is_record_header(const byte_cursor& block, std::uint64_t offset) {
  if (!block.has(offset, layout::record_header_bytes)) return false;
  if (block.at<std::uint32_t>(offset) != layout::record_signature) return false;
  const auto size = block.at_or_zero<std::uint32_t>(offset + 4);
  return size >= layout::record_size_min && size <= layout::record_size_max;
}

bool is_plausible_record_header(const byte_cursor& block, std::uint64_t offset) {
  if (!is_record_header(block, offset)) return false;
  const auto time_written = block.at_or_zero<std::uint64_t>(offset + 16);
  return qx::time(time_written, qx::type_time::filetime).valid();
}

std::optional<std::uint64_t> find_next_record(std::span<const std::byte> area) {
  const byte_cursor bytes(area);
  if (area.size() < least_area_bytes || !is_record_header(bytes, 0)) return std::nullopt;
  std::vector<std::uint64_t> hit;
  for (std::uint64_t at = behind_signature; at < area.size();) {
    const auto rest = area.subspan(static_cast<std::size_t>(at));
    if (!find_u32(hit, rest, layout::record_signature, 8, true)) return std::nullopt;
    at += hit.front();
    if (is_plausible_record_header(bytes, at)) return at;
    at += 4;
  }
  return std::nullopt;
}

std::vector<std::uint64_t> find_record_signatures(std::span<const std::byte> area) {
  std::vector<std::uint64_t> hits;
  find_u32(hits, area, layout::record_signature, 4, false);
  return hits;
}

}  // namespace zanvik
