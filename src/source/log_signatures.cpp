#include "source/log_signatures.h"

#include <algorithm>
#include <cstring>

#include "evt/evt_record.h"
#include "evtx/container/chunk.h"

namespace zanvik {
namespace {

constexpr std::size_t step = 64;

// Whether the first two bytes of a signature are at one of the first 64 positions. Compilers make
// vector instructions of this: no branch, and a constant count.
bool may_hold(const std::byte* bytes) {
  unsigned char found = 0;
  for (std::size_t i = 0; i < step; ++i) {
    const auto first = static_cast<unsigned char>(bytes[i]);
    const auto second = static_cast<unsigned char>(bytes[i + 1]);
    const auto chunk = static_cast<unsigned char>((first == 'E') & (second == 'l'));
    const auto record = static_cast<unsigned char>((first == '*') & (second == '*'));
    const auto legacy = static_cast<unsigned char>((first == 'L') & (second == 'f'));
    found = static_cast<unsigned char>(found | chunk | record | legacy);
  }
  return found != 0;
}

log_signature signature_at(const std::byte* bytes) {
  std::uint32_t word;
  std::memcpy(&word, bytes, sizeof word);
  if (word == evtx_layout::record_signature) return log_signature::record;
  if (word == evt_layout::signature) return log_signature::legacy;
  std::uint64_t both;
  std::memcpy(&both, bytes, sizeof both);
  return both == evtx_layout::chunk_signature ? log_signature::chunk : log_signature::none;
}

}  // namespace

signature_hit find_signature(std::span<const std::byte> bytes, std::size_t from) {
  if (bytes.size() < longest_signature) return {log_signature::none, from};
  const std::size_t end = bytes.size() - longest_signature + 1;
  while (from < end) {
    const std::size_t stop = std::min(end, from + step);
    const bool look = from + step >= bytes.size() || may_hold(bytes.data() + from);
    for (std::size_t at = look ? from : stop; at < stop; ++at) {
      const log_signature kind = signature_at(bytes.data() + at);
      if (kind != log_signature::none) return {kind, at};
    }
    from = stop;
  }
  return {log_signature::none, std::max(from, end)};
}

}  // namespace zanvik
