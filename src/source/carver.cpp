#include "source/carver.h"

#include <algorithm>
#include <cstring>
#include <optional>

#include "base/limits.h"
#include "evtx/bxml/bxml_tokens.h"
#include "evtx/container/slack.h"
#include "source/crc32.h"
#include "source/log_signatures.h"

namespace zanvik {
namespace {

namespace layout = evtx_layout;

constexpr std::size_t room_bytes = 1 << 20;
constexpr std::uint32_t least_record_bytes = layout::record_header_bytes + 4;

// Size of a chunk's header without its tables; its own checksum is last.
constexpr std::uint64_t header_size_at = 40;
constexpr std::uint64_t free_space_at = 48;
constexpr std::uint64_t data_checksum_at = 52;
constexpr std::uint64_t header_checksum_at = 124;
constexpr std::uint64_t summed_front_bytes = 120;
constexpr std::uint32_t header_size = 128;

// A run without a place is put at the end of the chunk, where no offset of a true record leads.
constexpr std::uint32_t behind_chunk = layout::chunk_bytes;

// Where in its chunk a record was, by its template.
std::uint32_t place_of(std::span<const std::byte> record) {
  constexpr std::uint64_t instance = layout::record_header_bytes + 4;
  constexpr std::uint64_t definition = instance + layout::bare_instance_bytes;
  const byte_cursor bytes(record);
  const auto token = bytes.at_or_zero<std::uint8_t>(instance);
  const auto id = bytes.at_or_zero<std::uint32_t>(instance + 2);
  const auto at = bytes.at_or_zero<std::uint32_t>(instance + 6);
  if (!is_token(token, token_template_instance)) return record_run::no_place;
  if (bytes.at<std::uint32_t>(definition + layout::definition_guid_at) != id) {
    return record_run::no_place;
  }
  const bool fits = at >= layout::chunk_header_bytes + definition && at < layout::chunk_bytes &&
                    record.size() <= layout::chunk_bytes - (at - definition);
  return fits ? static_cast<std::uint32_t>(at - definition) : record_run::no_place;
}

// Whether bytes that nothing declared are a record: a plausible time, and the header of binary XML.
bool looks_like_record(std::span<const std::byte> record) {
  const byte_cursor bytes(record);
  return is_plausible_record_header(bytes, 0) &&
         bytes.at<std::uint32_t>(layout::record_header_bytes) == expected_fragment;
}

}  // namespace

carver::carver(event_sink& sink, const log_source& input, bool slack)
    : source_(input),
      legacy_source_(input),
      slack_(slack),
      chunks_(sink),
      learner_(nobody_),
      legacy_(sink) {
  source_.kind = log_kind::evtx;
  legacy_source_.kind = log_kind::evt;
  chunks_.set_source(source_);
  chunks_.set_flags(event_carved);
  chunks_.set_library(&library_);
  learner_.set_source(source_);
  learner_.set_library(&library_);
  legacy_.set_source(legacy_source_);
  legacy_.set_flags(event_carved);
}

std::span<std::byte> carver::room(std::uint64_t offset) {
  if (offset != base_ + held_) {
    scan(true);
    held_ = next_ = 0;
    base_ = offset;
  }
  // Bytes that may be needed again: the length of a legacy record precedes its signature.
  const std::size_t done = next_ < 4 ? 0 : next_ - 4;
  if (window_.empty()) window_.resize(room_bytes);
  if (done != 0) std::memmove(window_.data(), window_.data() + done, held_ - done);
  held_ -= done;
  next_ -= done;
  base_ += done;
  if (window_.size() < held_ + room_bytes) window_.resize(held_ + room_bytes);
  return std::span(window_).subspan(held_, room_bytes);
}

void carver::take(std::size_t bytes) {
  held_ += bytes;
  passed_ += bytes;
  scan(false);
}

// Continues the search; `last` if the current bytes are the last ones.
void carver::scan(bool last) {
  const auto bytes = std::span<const std::byte>(window_).first(held_);
  for (;;) {
    const signature_hit hit = find_signature(bytes, next_);
    next_ = hit.at;
    if (hit.kind == log_signature::none) return;
    const outcome found = hit.kind == log_signature::chunk    ? take_chunk(hit.at, last)
                          : hit.kind == log_signature::record ? take_record(hit.at, last)
                                                              : take_legacy(hit.at, last);
    if (found.more) return;
    next_ = found.next;
  }
}

bool carver::finish() {
  scan(true);
  held_ = next_ = 0;
  close_run();
  std::uint64_t read_to = 0;
  const bool all = runs_.for_each([&](const record_run& run, std::span<const std::byte> bytes) {
    const std::uint64_t end = run.offset + run.size;
    const std::uint64_t credit = end - std::min(end, read_to);
    read_to = std::max(read_to, end);
    read_run(chunks_, run, bytes, credit);
  });
  return all && all_kept_;
}

carver::outcome carver::take_chunk(std::size_t at, bool last) {
  const std::uint64_t offset = base_ + at;
  const std::size_t there = held_ - at;
  if (there < layout::chunk_bytes && !last) return {at, true};
  const auto chunk = std::span(window_).subspan(at, std::min(there, layout::chunk_bytes));
  if (is_whole_chunk(chunk)) {
    if (offset >= run_.offset + run_bytes_.size()) close_run();
    if (watcher_) watcher_->on_chunk(chunk, offset);
    walk_settings settings;
    settings.inc_slack = slack_;
    settings.inside_records = slack_;
    walk_evtx_block(chunk, offset, chunks_, settings);
    return {at + layout::chunk_bytes};
  }
  if (chunk.size() >= layout::chunk_header_bytes) {
    close_run();
    run_ = {offset, 0, 0};
    const auto header = chunk.first(layout::chunk_header_bytes);
    run_bytes_.assign(header.begin(), header.end());
  }
  return {at + longest_signature};
}

bool carver::is_whole_chunk(std::span<const std::byte> chunk) {
  const byte_cursor bytes(chunk);
  const auto end = bytes.at_or_zero<std::uint32_t>(free_space_at);
  if (chunk.size() < layout::chunk_bytes || end < layout::chunk_header_bytes ||
      end > layout::chunk_bytes || bytes.at<std::uint32_t>(header_size_at) != header_size) {
    return false;
  }
  const std::uint32_t front = crc32_of(chunk.first(summed_front_bytes));
  const std::uint32_t header =
      crc32_of(chunk.subspan(header_size, layout::chunk_header_bytes - header_size), front);
  if (bytes.at<std::uint32_t>(header_checksum_at) != header) return false;
  const auto most = limits::carved_chunks_at_once +
                    static_cast<std::int64_t>(passed_ / limits::bytes_per_carved_chunk);
  if (++chunks_checked_ > most) return false;
  const auto data = chunk.subspan(layout::chunk_header_bytes, end - layout::chunk_header_bytes);
  return bytes.at<std::uint32_t>(data_checksum_at) == crc32_of(data);
}

carver::outcome carver::take_record(std::size_t at, bool last) {
  const std::uint64_t offset = base_ + at;
  const byte_cursor bytes(std::span<const std::byte>(window_).first(held_));
  const outcome behind{at + 4};
  if (!bytes.has(at, 8)) return {at + 4, !last};
  const auto size = bytes.at_or_zero<std::uint32_t>(at + 4);
  if (size < least_record_bytes || size > layout::record_size_max) return behind;
  if (!bytes.has(at, size)) return {last ? at + 4 : at, !last};
  if (bytes.at<std::uint32_t>(at + size - 4) != size) return behind;
  const auto record = bytes.bytes_at(at, size);
  const std::uint32_t place = place_of(record);
  if (append_to_run(offset, record, place) || !looks_like_record(record)) return behind;
  if (!run_bytes_.empty() && offset < run_.offset + run_bytes_.size()) {
    if (may_overlap(size)) keep_run({offset, place, 0}, record);
    return behind;
  }
  close_run();
  run_ = {offset, place, 0};
  run_bytes_.assign(record.begin(), record.end());
  return behind;
}

// Adds a record to the open run if it continues it, in the same chunk.
bool carver::append_to_run(std::uint64_t offset, std::span<const std::byte> record,
                           std::uint32_t place) {
  const std::size_t before = run_bytes_.size();
  if (before == 0 || offset != run_.offset + before) return false;
  std::uint32_t start = run_.place;
  if (start == record_run::no_place && place != record_run::no_place &&
      place >= before + layout::chunk_header_bytes) {
    start = static_cast<std::uint32_t>(place - before);
  }
  const bool known = start != record_run::no_place;
  if (place != record_run::no_place && (!known || place != start + before)) return false;
  const std::uint64_t least = known ? start : layout::chunk_header_bytes;
  if (record.size() > layout::chunk_bytes - least - before) return false;
  run_.place = start;
  run_bytes_.insert(run_bytes_.end(), record.begin(), record.end());
  return true;
}

void carver::close_run() {
  const std::size_t least = run_.place == 0 ? layout::chunk_header_bytes : 0;
  if (run_bytes_.size() > least) keep_run(run_, run_bytes_);
  run_bytes_.clear();
}

// Reads the templates of a run and keeps it for the end.
void carver::keep_run(record_run run, std::span<const std::byte> bytes) {
  run.size = static_cast<std::uint32_t>(bytes.size());
  read_run(learner_, run, bytes, passed_ - learnt_);
  learnt_ = passed_;
  all_kept_ = runs_.add(run, bytes) && all_kept_;
  if (watcher_) watcher_->on_run(run, bytes);
}

void carver::read_run(evtx_event_reader& reader, const record_run& run,
                      std::span<const std::byte> bytes, std::uint64_t credit) {
  constexpr std::byte unknown{0xff};
  const bool placed = run.place != record_run::no_place;
  const std::uint32_t place = placed ? run.place : behind_chunk;
  if (fragment_.empty()) fragment_.assign(2 * layout::chunk_bytes, unknown);
  std::copy(bytes.begin(), bytes.end(), fragment_.begin() + place);
  // The chunk may have declared any number.
  if (place != 0) std::memset(fragment_.data() + layout::first_logical_record_at, 0, 8);
  const auto chunk = std::span<const std::byte>(fragment_);
  reader.start_fragment(placed ? chunk.first(layout::chunk_bytes) : chunk, run.offset - place,
                        credit);
  const byte_cursor in(bytes);
  for (std::uint64_t at = run.place == 0 ? layout::chunk_header_bytes : 0; at < bytes.size();
       at += std::max(in.at_or_zero<std::uint32_t>(at + 4), least_record_bytes)) {
    reader.on_record(place + at);
  }
  std::fill_n(fragment_.begin() + place, bytes.size(), unknown);
  std::fill_n(fragment_.begin(), layout::chunk_header_bytes, unknown);
}

// Charges a record that overlaps another one.
bool carver::may_overlap(std::uint64_t size) {
  overlapped_ += static_cast<std::int64_t>(size);
  return overlapped_ <= limits::carved_overlap_bytes + static_cast<std::int64_t>(passed_);
}

carver::outcome carver::take_legacy(std::size_t at, bool last) {
  const outcome behind{at + 4};
  if (at < evt_layout::signature_at) return behind;
  const std::size_t begin = at - evt_layout::signature_at;
  const byte_cursor bytes(std::span<const std::byte>(window_).first(held_));
  const auto size = bytes.at_or_zero<std::uint32_t>(begin);
  if (size < evt_layout::record_head_bytes + 4 || size > limits::carved_legacy_bytes) return behind;
  if (!bytes.has(begin, size)) return {last ? at + 4 : at, !last};
  if (bytes.at<std::uint32_t>(begin + size - 4) != size) return behind;
  const std::uint64_t offset = base_ + begin;
  if (offset >= run_.offset + run_bytes_.size()) close_run();
  if (offset < legacy_end_ && !may_overlap(size)) return behind;
  legacy_end_ = std::max(legacy_end_, offset + size);
  const std::int64_t before = limits::evt_text_budget(passed_) - texts_read_;
  std::int64_t left = before;
  parse_evt_record(byte_cursor(bytes.bytes_at(begin, size)), 0, legacy_record_, left);
  texts_read_ += before - std::max<std::int64_t>(left, 0);
  legacy_.set_buffer(offset, window_.data() + begin + size);
  legacy_.on_record(legacy_record_);
  if (watcher_) watcher_->on_legacy_record(bytes.bytes_at(begin, size), offset);
  return behind;
}

}  // namespace zanvik
