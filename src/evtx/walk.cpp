#include <algorithm>
#include <cstring>

#include "evtx/bxml/bxml_tokens.h"
#include "evtx/container/slack.h"
#include "evtx/evtx.h"

namespace zanvik {
namespace {

namespace layout = evtx_layout;

constexpr std::uint64_t no_records = ~std::uint64_t{0};

// The walk over one block.
class block_walk {
 public:
  block_walk(std::span<std::byte> block, std::uint64_t base_offset, chunk_visitor& visitor,
             const walk_settings& settings)
      : writable_(block),
        block_(block, base_offset),
        base_(base_offset),
        visitor_(visitor),
        settings_(settings) {}

  void walk_chunk(std::uint64_t chunk) {
    visitor_.start_chunk(block_.bytes().subspan(static_cast<std::size_t>(chunk)), block_.size(),
                         base_ + chunk);
    std::uint64_t record = chunk + layout::chunk_header_bytes;
    if (block_.at<std::uint64_t>(chunk + layout::last_record_at) != no_records) {
      record = walk_records(chunk, record);
    }
    if (settings_.inc_slack) walk_slack(chunk, record);
  }

 private:
  std::uint64_t walk_records(std::uint64_t chunk, std::uint64_t record);
  bool resynchronise(std::uint64_t chunk, std::uint64_t last_good, std::uint64_t& record);
  void walk_slack(std::uint64_t chunk, std::uint64_t area);
  void walk_inside(std::uint64_t chunk, std::uint64_t record);
  bool is_slack_candidate(std::uint64_t record, std::uint64_t area_end) const;

  std::uint32_t size_of(std::uint64_t record) const {
    return block_.at_or_zero<std::uint32_t>(record + 4);
  }
  std::uint64_t number_of(std::uint64_t record) const {
    return block_.at_or_zero<std::uint64_t>(record + 8);
  }

  std::span<std::byte> writable_;
  byte_cursor block_;
  std::uint64_t base_;
  chunk_visitor& visitor_;
  const walk_settings& settings_;
  std::uint64_t number_before_ = 0;
};

// The declared records, from `record` on. Returns the position where it stopped.
std::uint64_t block_walk::walk_records(std::uint64_t chunk, std::uint64_t record) {
  auto counter = block_.at_or_zero<std::uint64_t>(chunk + layout::first_logical_record_at);
  const auto last = block_.at_or_zero<std::uint64_t>(chunk + layout::nth_logical_record_at);
  // Only the block's end and the counter stop a record size that reaches past the chunk. The bytes
  // walked are counted, not the position: resynchronising may lead back to the same records.
  std::uint64_t walked = record - chunk;
  std::uint64_t last_good = 0;
  for (; counter <= last && record <= block_.size() && walked <= limits::record_walk_bytes;
       ++counter) {
    if (settings_.progress) settings_.progress->at_record(number_of(record), number_before_);
    if (!is_record_header(block_, record)) {
      if (!resynchronise(chunk, last_good, record)) break;
      walked += record - last_good;
    }
    if (size_of(record) == 0) break;  // cut down to nothing
    number_before_ = number_of(record);
    if (visitor_.on_record(record - chunk)) last_good = record;
    if (settings_.inside_records) walk_inside(chunk, record);
    walked += size_of(record);
    record += size_of(record);
    if (counter == no_records) break;  // it would wrap
  }
  return record;
}

// Finds the next sound record after the last good one. At a chunk's first record there is no good
// one yet: the search then starts at the block's first byte, which is not a record, and fails; that
// is meant.
bool block_walk::resynchronise(std::uint64_t chunk, std::uint64_t last_good,
                               std::uint64_t& record) {
  const std::uint64_t chunk_end = chunk + layout::chunk_bytes;
  if (!settings_.inc_slack || last_good >= chunk_end) return false;
  const auto found = find_next_record(block_.bytes_at(last_good, chunk_end - last_good));
  if (!found) return false;
  record = last_good + *found;
  const std::uint64_t distance = chunk_end - record;
  if (size_of(record) > distance) {
    const auto cut = static_cast<std::uint32_t>(distance);
    std::memcpy(writable_.data() + record + 4, &cut, sizeof(cut));
  }
  return true;
}

// The free tail of the chunk, from `area` on: each position with a signature is tried, including
// records inside records and ones that were read already.
void block_walk::walk_slack(std::uint64_t chunk, std::uint64_t area) {
  const std::uint64_t area_end = chunk + layout::chunk_bytes;
  if (area >= area_end) return;
  const std::uint64_t area_bytes = area_end - area;
  for (const std::uint64_t hit : find_record_signatures(block_.bytes_at(area, area_bytes))) {
    const std::uint64_t record = area + hit;
    if (!is_slack_candidate(record, area_end)) continue;
    visitor_.on_slack_candidate(record - chunk, area_bytes);
  }
}

// Records inside a record. The second size of the last one may be the outer record's by now, so it
// is the header, its time and the start of binary XML that show one.
void block_walk::walk_inside(std::uint64_t chunk, std::uint64_t record) {
  const std::uint64_t begin = record + layout::record_header_bytes;
  const std::uint64_t end = std::min(record + size_of(record), chunk + layout::chunk_bytes);
  if (begin >= end) return;
  const std::uint64_t bytes = end - begin;
  for (const std::uint64_t hit : find_record_signatures(block_.bytes_at(begin, bytes))) {
    const std::uint64_t inner = begin + hit;
    if (!is_plausible_record_header(block_, inner) || size_of(inner) > end - inner) continue;
    const auto content = block_.at<std::uint32_t>(inner + layout::record_header_bytes);
    if (content == expected_fragment) visitor_.on_slack_candidate(inner - chunk, bytes);
  }
}

bool block_walk::is_slack_candidate(std::uint64_t record, std::uint64_t area_end) const {
  if (!block_.has(record, layout::record_header_bytes)) return false;
  const std::uint64_t size = size_of(record);
  if (size > area_end - record) return false;
  // The low 16 bits of the position are the offset in its chunk.
  if ((record & 0xffff) + size > layout::chunk_bytes) return false;
  // A signature in the number: what was read as a size is one too.
  return (number_of(record) & 0xffffffff) != layout::record_signature;
}

// Hands what a reader makes of each record to a sink.
class reading_visitor : public chunk_visitor {
 public:
  reading_visitor(record_reader& reader, record_sink& sink, const walk_settings& settings)
      : reader_(reader), sink_(sink) {
    reader_.set_options(settings.reading);
    reader_.set_slack_state(settings.inc_slack, false);
  }

  void start_chunk(std::span<const std::byte> bytes, std::uint64_t bound,
                   std::uint64_t file_offset) override {
    reader_.start_chunk(bytes, bound, file_offset);
  }
  bool on_record(std::uint64_t offset) override {
    record_fields* fields = reader_.read(offset);
    if (fields) sink_.on_record(*fields);
    return fields != nullptr;
  }
  void on_slack_candidate(std::uint64_t offset, std::uint64_t area_bytes) override {
    reader_.set_slack_state(true, true);
    if (record_fields* fields = reader_.read_slack(offset, area_bytes)) sink_.on_record(*fields);
  }

 private:
  record_reader& reader_;
  record_sink& sink_;
};

}  // namespace

walk_result walk_evtx_block(std::span<std::byte> block, std::uint64_t base_offset,
                            record_reader& reader, record_sink& sink,
                            const walk_settings& settings) {
  reading_visitor visitor(reader, sink, settings);
  return walk_evtx_block(block, base_offset, visitor, settings);
}

walk_result walk_evtx_block(std::span<std::byte> block, std::uint64_t base_offset,
                            chunk_visitor& visitor, const walk_settings& settings) {
  if (block.empty()) return walk_result::nothing;
  const byte_cursor bytes(block);
  const auto signature = bytes.at<std::uint64_t>(0);
  if (signature != layout::file_signature && signature != layout::chunk_signature) {
    return walk_result::not_evtx;
  }
  std::uint64_t chunk = signature == layout::file_signature ? layout::file_header_bytes : 0;
  if (!bytes.has(chunk, layout::chunk_bytes)) return walk_result::no_full_chunk;
  block_walk walk(block, base_offset, visitor, settings);
  for (; bytes.has(chunk, layout::chunk_bytes); chunk += layout::chunk_bytes) {
    if (bytes.at<std::uint64_t>(chunk) == layout::chunk_signature) walk.walk_chunk(chunk);
  }
  return walk_result::walked;
}

}  // namespace zanvik
