#include "inspect/chunk_order.h"

#include <algorithm>
#include <map>
#include <tuple>

namespace zanvik {
namespace {

std::string text_of(std::uint64_t value) { return std::to_string(value); }

std::size_t lowest(const std::vector<chunk_ends>& ends) {
  const auto found = std::min_element(
      ends.begin(), ends.end(),
      [](const chunk_ends& a, const chunk_ends& b) { return a.first.number < b.first.number; });
  return static_cast<std::size_t>(found - ends.begin());
}

// The last one of those with the highest number.
const chunk_ends& newest(const std::vector<chunk_ends>& ends) {
  return *std::max_element(
      ends.rbegin(), ends.rend(),
      [](const chunk_ends& a, const chunk_ends& b) { return a.last.number < b.last.number; });
}

void find_copies(const std::vector<chunk_summary>& chunks, finding_list& findings) {
  std::map<std::tuple<std::uint64_t, std::uint64_t, std::uint32_t>, std::uint64_t> seen;
  for (const chunk_summary& chunk : chunks) {
    if (chunk.records == 0) continue;
    const auto [first, made] =
        seen.try_emplace({chunk.found_first, chunk.found_last, chunk.data_checksum}, chunk.index);
    if (made) continue;
    findings
        .add(finding_kind::chunk_twice, chunk.offset,
             "the same records as chunk " + text_of(first->second))
        .chunk = chunk.index;
  }
}

void find_wiped(const std::vector<chunk_summary>& chunks, finding_list& findings) {
  const auto used = [](const chunk_summary& chunk) { return chunk.state == chunk_state::sound; };
  const auto last = std::find_if(chunks.rbegin(), chunks.rend(), used);
  for (auto chunk = chunks.begin(); chunk < last.base(); ++chunk) {
    if (chunk->state != chunk_state::empty) continue;
    findings.add(finding_kind::chunk_zeroed, chunk->offset, "zeros between used chunks").chunk =
        chunk->index;
  }
}

}  // namespace

std::size_t newest_chunk(const std::vector<chunk_ends>& ends) { return newest(ends).chunk; }

void find_in_order(const std::vector<chunk_summary>& chunks, const std::vector<chunk_ends>& ends,
                   record_sequence& sequence, finding_list& findings) {
  find_copies(chunks, findings);
  find_wiped(chunks, findings);
  if (ends.empty()) return;
  const std::size_t begin = lowest(ends);
  for (std::size_t step = 1; step < ends.size(); ++step) {
    const chunk_ends& before = ends[(begin + step - 1) % ends.size()];
    const chunk_ends& next = ends[(begin + step) % ends.size()];
    if (next.first.number < before.first.number) {
      findings
          .add(finding_kind::chunk_order, next.first.offset,
               "begins with record " + text_of(next.first.number) +
                   ", after a chunk that begins with " + text_of(before.first.number))
          .chunk = next.first.chunk;
    } else {
      sequence.compare(before.last, next.first);
    }
  }
}

void find_in_claims(const header_claims& claims, const std::vector<chunk_summary>& chunks,
                    const std::vector<chunk_ends>& ends, finding_list& findings) {
  const auto used = static_cast<std::uint64_t>(
      std::count_if(chunks.begin(), chunks.end(),
                    [](const chunk_summary& chunk) { return chunk.state == chunk_state::sound; }));
  if (claims.chunks != used) {
    findings.add(finding_kind::chunk_count, 42,
                 "declares " + text_of(claims.chunks) + ", holds " + text_of(used));
  }
  if (ends.empty()) return;
  const std::uint64_t oldest = chunks[ends[lowest(ends)].chunk].index;
  const std::uint64_t newest_index = chunks[newest_chunk(ends)].index;
  const std::uint64_t last_number = newest(ends).last.number;
  if (claims.oldest_chunk != oldest || claims.newest_chunk != newest_index) {
    findings.add(finding_kind::oldest_newest, 8,
                 "names " + text_of(claims.oldest_chunk) + " and " + text_of(claims.newest_chunk) +
                     ", the records say " + text_of(oldest) + " and " + text_of(newest_index));
  }
  if (claims.next_number != last_number + 1) {
    findings.add(finding_kind::next_number, 24,
                 "names " + text_of(claims.next_number) + " as the next record, the last is " +
                     text_of(last_number));
  }
}

}  // namespace zanvik
