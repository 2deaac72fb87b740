#include "inspect/evtx_ledger.h"

#include <algorithm>

#include "base/hash_mix.h"
#include "evtx/container/chunk.h"
#include "inspect/checksum.h"
#include "inspect/chunk_findings.h"

namespace zanvik {
namespace {

namespace layout = evtx_layout;

constexpr std::uint32_t flag_open = 1;
constexpr std::uint32_t flag_full = 2;
constexpr std::uint32_t flag_no_checksum = 4;
constexpr std::uint64_t header_bytes_used = 128;
constexpr std::uint64_t header_checksum_at = 124;
constexpr std::uint64_t header_summed_bytes = 120;

// Of number and time together: two records of a log with the same number and time are taken as
// equal. With the secret, so that nobody can make different ones that seem to be.
std::uint64_t key_of(const area& record) {
  return keyed_hash(record.number, record.time_written);
}

std::string hex_text(std::uint32_t value) {
  constexpr char digits[] = "0123456789abcdef";
  std::string text = "0x00000000";
  for (std::size_t at = text.size(); value != 0; value >>= 4) text[--at] = digits[value & 15];
  return text;
}

}  // namespace

evtx_ledger::evtx_ledger(log_ledger& out, const log_source& source, event_sink& events,
                         std::uint64_t latest)
    : out_(out), sequence_(out.findings, latest), reader_(source, events) {
  out_.format = "evtx";
}

void evtx_ledger::add_header(std::span<const std::byte> header) {
  out_.account.add({0, header.size(), area_kind::file_header});
  finding_list& findings = out_.findings;
  const byte_cursor bytes(header);
  if (header.size() < layout::file_header_bytes) {
    findings.add(finding_kind::file_tail, 0, "the file ends in its header");
  }
  if (!bytes.has(0, header_bytes_used)) return;
  if (bytes.at<std::uint64_t>(0) != layout::file_signature) {
    findings.add(finding_kind::header_fields, 0, "no signature");
  }
  claims_ = header_claims{bytes.at_or_zero<std::uint64_t>(8), bytes.at_or_zero<std::uint64_t>(16),
                          bytes.at_or_zero<std::uint64_t>(24), bytes.at_or_zero<std::uint16_t>(42)};
  const std::uint64_t used = bytes.at_or_zero<std::uint32_t>(32);
  const std::uint64_t minor = bytes.at_or_zero<std::uint16_t>(36);
  const std::uint64_t major = bytes.at_or_zero<std::uint16_t>(38);
  const std::uint64_t block = bytes.at_or_zero<std::uint16_t>(40);
  const auto flags = bytes.at_or_zero<std::uint32_t>(120);
  const auto checksum = bytes.at_or_zero<std::uint32_t>(header_checksum_at);
  const bool no_checksum = (flags & flag_no_checksum) != 0 && checksum == 0;
  const bool good = checksum == crc32_of(header.first(header_summed_bytes));
  open_ = (flags & flag_open) != 0;
  const std::string version = std::to_string(major) + '.' + std::to_string(minor);
  out_.facts = {{"version", version},
                {"flags", hex_text(flags)},
                {"dirty", open_},
                {"full", (flags & flag_full) != 0},
                {"oldest_chunk", claims_->oldest_chunk},
                {"newest_chunk", claims_->newest_chunk},
                {"declared_chunks", claims_->chunks},
                {"next_record", claims_->next_number},
                {"header_checksum_good", good}};
  if (major != 3 || minor > 2) {
    findings.add(finding_kind::header_fields, 36, "version " + version);
  }
  if (used != header_bytes_used || block != layout::file_header_bytes) {
    findings.add(finding_kind::header_fields, 32,
                 "header sizes " + std::to_string(used) + " and " + std::to_string(block));
  }
  if ((flags & ~(flag_open | flag_full | flag_no_checksum)) != 0) {
    findings.add(finding_kind::header_fields, 120, "flags " + hex_text(flags));
  }
  if (open_) findings.add(finding_kind::not_closed, 120, "the dirty flag is set");
  if ((flags & flag_full) != 0) findings.add(finding_kind::log_full, 120, "the full flag is set");
  if (no_checksum) {
    findings.add(finding_kind::no_checksums, 120, "the flag for it is set");
  } else if (!good) {
    findings.add(finding_kind::header_checksum, header_checksum_at, "of the file header");
  }
  if (!all_zero(header.subspan(header_bytes_used))) {
    findings.add(finding_kind::header_residue, header_bytes_used, "bytes that are not zero");
  }
}

void evtx_ledger::add_block(std::span<std::byte> block, std::uint64_t offset) {
  const std::size_t whole = block.size() / layout::chunk_bytes;
  const auto chunks = block.first(whole * layout::chunk_bytes);
  const auto chunk_at = [&chunks](std::size_t index) {
    return chunks.subspan(index * layout::chunk_bytes, layout::chunk_bytes);
  };
  // Everything that depends on the bytes comes first: the search of slack may change them.
  walked_.clear();
  const std::size_t first = out_.chunks.size();
  for (std::size_t index = 0; index < whole; ++index) {
    walked_.push_back(walk_.walk(chunk_at(index)));
    const std::uint64_t at = offset + index * layout::chunk_bytes;
    const std::uint64_t place = at / layout::chunk_bytes;  // the header is less than a chunk
    out_.chunks.push_back({.index = place, .offset = at});
  }
  const auto given = reader_.read(chunks, offset);
  for (std::size_t index = 0; index < whole; ++index) {
    const std::uint64_t elsewhere = settle_chunk(walked_[index], given[index]);
    out_.account.line(area_kind::read_elsewhere).records += elsewhere;
    out_.account.given_with_slack += given[index].plain.size() + given[index].slack.size();
    add_chunk(chunk_at(index), first + index, walked_[index]);
  }
  const auto rest = block.subspan(chunks.size());
  if (rest.empty()) return;
  out_.account.add({0, rest.size(), area_kind::tail});
  out_.findings.add(finding_kind::file_tail, offset + chunks.size(),
                    std::to_string(rest.size()) + " bytes that are no whole chunk");
}

void evtx_ledger::add_chunk(std::span<const std::byte> bytes, std::size_t position,
                            const walked_chunk& chunk) {
  chunk_summary& summary = out_.chunks[position];
  find_in_chunk(bytes, chunk, summary, out_.findings);
  count_declared(chunk);
  sequence_.start_run();
  std::optional<chunk_ends> ends;
  for (const area& part : chunk.areas) {
    add_area(part, position);
    if (!holds_records(part.kind) || is_free_record(part.kind)) continue;
    if (part.kind == area_kind::lost_chunk) continue;
    const sequence_record record{summary.offset + part.offset, summary.index, part.number,
                                 part.time_written};
    sequence_.add(record);
    if (!ends) ends = {position, record, record};
    ends->last = record;
  }
  if (ends) ends_.push_back(*ends);
}

void evtx_ledger::add_area(const area& part, std::size_t chunk) {
  if (is_free_record(part.kind)) {
    free_.push_back({part, chunk});
    return;
  }
  out_.account.add(part);
  if (holds_records(part.kind)) living_.push_back(key_of(part));
}

// Declared numbers, and those of them that no record of the chunk has.
void evtx_ledger::count_declared(const walked_chunk& chunk) {
  const auto declared = chunk.header.declared();
  if (chunk.state != chunk_state::sound || !declared) return;
  std::vector<std::uint64_t> found;
  for (const area& part : chunk.areas) {
    if (holds_records(part.kind) && !is_free_record(part.kind) &&
        part.number >= chunk.header.first_number && part.number <= chunk.header.last_number) {
      found.push_back(part.number);
    }
  }
  std::sort(found.begin(), found.end());
  const auto distinct = std::unique(found.begin(), found.end()) - found.begin();
  out_.account.declared += *declared;
  out_.account.missing += *declared - static_cast<std::uint64_t>(distinct);
}

void evtx_ledger::add_unread(std::uint64_t offset, std::uint64_t size) {
  out_.account.add({0, size, area_kind::unread_part});
  out_.findings.add(finding_kind::unreadable, offset, std::to_string(size) + " bytes");
}

void evtx_ledger::settle_free_records() {
  std::sort(living_.begin(), living_.end());
  std::vector<std::uint64_t> of_chunk(out_.chunks.size());
  for (free_candidate& candidate : free_) {
    if (std::binary_search(living_.begin(), living_.end(), key_of(candidate.part))) {
      candidate.part.kind = area_kind::free_copy;
    } else {
      ++of_chunk[candidate.chunk];
    }
    out_.account.add(candidate.part);
  }
  for (std::size_t chunk = 0; chunk < of_chunk.size(); ++chunk) {
    if (of_chunk[chunk] == 0) continue;
    out_.findings
        .add(finding_kind::free_records, out_.chunks[chunk].offset,
             std::to_string(of_chunk[chunk]) + (of_chunk[chunk] == 1 ? " record" : " records") +
                 " in the free space of the chunk")
        .chunk = out_.chunks[chunk].index;
  }
}

// A log that was not closed has the header from when it was opened, and its last chunk may be
// incomplete; Windows leaves both like that.
void evtx_ledger::excuse_open_log() {
  for (const finding_kind kind : {finding_kind::header_checksum, finding_kind::chunk_count,
                                  finding_kind::oldest_newest, finding_kind::next_number}) {
    out_.findings.excuse(kind);
  }
  if (ends_.empty()) return;
  const std::uint64_t newest = out_.chunks[newest_chunk(ends_)].index;
  for (const finding_kind kind :
       {finding_kind::chunk_header_checksum, finding_kind::chunk_data_checksum}) {
    out_.findings.recast(kind, newest, finding_kind::checksum_stale);
  }
}

std::uint64_t evtx_ledger::first_number() const {
  const auto first = std::min_element(
      ends_.begin(), ends_.end(),
      [](const chunk_ends& a, const chunk_ends& b) { return a.first.number < b.first.number; });
  return first == ends_.end() ? 0 : first->first.number;
}

void evtx_ledger::finish() {
  settle_free_records();
  find_in_order(out_.chunks, ends_, sequence_, out_.findings);
  if (claims_) find_in_claims(*claims_, out_.chunks, ends_, out_.findings);
  if (open_) excuse_open_log();
}

}  // namespace zanvik
