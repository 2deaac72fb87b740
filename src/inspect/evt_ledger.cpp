#include "inspect/evt_ledger.h"

#include <algorithm>
#include <string>

#include "base/time_value.h"
#include "evt/evt_record.h"
#include "inspect/finding_runs.h"

namespace zanvik {
namespace {

namespace layout = evt_layout;

constexpr std::uint64_t header_bytes = 48;
constexpr std::uint64_t end_record_bytes = 40;
constexpr std::uint32_t flag_open = 1, flag_wrapped = 2, flag_full = 4, flag_archive = 8;
constexpr std::uint32_t end_marks[] = {0x11111111, 0x22222222, 0x33333333, 0x44444444};

std::string text_of(std::uint64_t value) { return std::to_string(value); }

}  // namespace

void evt_ledger::find(finding_kind kind, const area& part, std::string detail) {
  finding& made = out_.findings.add(kind, part.offset, std::move(detail));
  if (holds_records(part.kind)) made.record = part.number;
}

void evt_ledger::read_header() {
  const auto at = [this](std::uint64_t offset) {
    return std::uint64_t{log_.at_or_zero<std::uint32_t>(offset)};
  };
  header_ = {at(16), at(20), at(24), at(28)};
  const auto flags = static_cast<std::uint32_t>(at(36));
  open_ = (flags & flag_open) != 0;
  out_.format = "evt";
  out_.facts = {{"version", text_of(at(8)) + '.' + text_of(at(12))},
                {"dirty", open_},
                {"wrapped", (flags & flag_wrapped) != 0},
                {"full", (flags & flag_full) != 0},
                {"archive", (flags & flag_archive) != 0},
                {"begin", header_.begin},
                {"end", header_.end},
                {"next_record", header_.next_number},
                {"oldest_record", header_.oldest},
                {"declared_size", at(32)},
                {"retention_seconds", at(40)}};
  finding_list& findings = out_.findings;
  if (at(8) != 1 || at(12) != 1) {
    findings.add(finding_kind::header_fields, 8,
                 "version " + text_of(at(8)) + '.' + text_of(at(12)));
  }
  if (at(0) != header_bytes || at(44) != header_bytes) {
    findings.add(finding_kind::header_fields, 0,
                 "sizes " + text_of(at(0)) + " in front, " + text_of(at(44)) + " at the end");
  }
  if (at(32) != log_.size()) {
    findings.add(finding_kind::file_tail, 32,
                 "declares " + text_of(at(32)) + " bytes, the file has " + text_of(log_.size()));
  }
  if (open_) findings.add(finding_kind::not_closed, 36, "the dirty flag is set");
  if ((flags & flag_full) != 0) findings.add(finding_kind::log_full, 36, "the full flag is set");
}

bool evt_ledger::is_end_record(std::uint64_t at) const {
  if (!log_.has(at, end_record_bytes)) return false;
  for (std::uint64_t i = 0; i < std::size(end_marks); ++i) {
    if (log_.at_or_zero<std::uint32_t>(at + 4 + 4 * i) != end_marks[i]) return false;
  }
  return true;
}

// The next record or end-of-file record at or after `from`, or the end of the log.
std::uint64_t evt_ledger::next_place(std::uint64_t from) const {
  for (std::uint64_t at = from; log_.has(at, 8); at += 4) {
    const auto word = log_.at_or_zero<std::uint32_t>(at + layout::signature_at);
    if (word == end_marks[0] ? is_end_record(at) : word == layout::signature) return at;
  }
  return log_.size();
}

// There is a record's signature at `at`. Returns where its area ends.
std::uint64_t evt_ledger::take_record(std::uint64_t at) {
  const auto size = log_.at_or_zero<std::uint32_t>(at);
  area part{at, size, area_kind::record_read, log_.at_or_zero<std::uint32_t>(at + 8)};
  const auto written = log_.at_or_zero<std::uint32_t>(at + 16);
  part.time_written = qx::time(written, qx::type_time::unix_time).filetime();
  if (size < layout::record_head_bytes || !log_.has(at, size)) {
    part.kind = size < layout::record_head_bytes ? area_kind::lost_size : area_kind::lost_cut;
    part.size = next_place(at + 4) - at;
  }
  areas_.push_back(part);
  return at + part.size;
}

void evt_ledger::walk(std::span<const std::byte> log) {
  areas_.push_back({0, std::min<std::uint64_t>(header_bytes, log.size()), area_kind::file_header});
  for (std::uint64_t at = areas_[0].size; at < log.size();) {
    if (is_end_record(at)) {
      end_records_.push_back(at);
      areas_.push_back({at, end_record_bytes, area_kind::end_record});
      at += end_record_bytes;
    } else if (log_.at<std::uint32_t>(at + layout::signature_at) == layout::signature) {
      at = take_record(at);
    } else {
      const std::uint64_t end = next_place(at + 4);
      const bool zero = all_zero(log.subspan(at, end - at));
      areas_.push_back({at, end - at, zero ? area_kind::free_zero : area_kind::damage});
      at = end;
    }
  }
  join_wrapped_record();
}

// If the last record reaches past the file's end, the bytes after the header are its rest.
void evt_ledger::join_wrapped_record() {
  if (areas_.size() < 3) return;
  const area& last = areas_.back();
  area& front = areas_[1];
  if (last.kind != area_kind::lost_cut || front.kind != area_kind::damage) return;
  const auto size = log_.at_or_zero<std::uint32_t>(last.offset);
  if (size - last.size != front.size) return;
  front.kind = area_kind::wrapped_rest;
  wrapped_ = true;
}

bool evt_ledger::is_living(std::uint64_t offset) const {
  if (claims_.begin <= claims_.end) return offset >= claims_.begin && offset < claims_.end;
  return offset >= claims_.begin || offset < claims_.end;
}

// Kinds by what the reader returns and by where the ring is.
void evt_ledger::settle(std::span<const std::uint64_t> given) {
  std::uint64_t matched = 0;
  for (area& part : areas_) {
    const bool living = is_living(part.offset);
    if (part.kind == area_kind::damage && !living) part.kind = area_kind::free_data;
    if (!holds_records(part.kind)) continue;
    const bool was_given = std::binary_search(given.begin(), given.end(), part.offset);
    matched += was_given;
    if (was_given) {
      part.kind = living ? area_kind::record_read : area_kind::record_outside;
    } else if (part.kind == area_kind::record_read) {
      part.kind = area_kind::lost_behind;
    }
  }
  for (const area& part : areas_) out_.account.add(part);
  out_.account.line(area_kind::read_elsewhere).records += given.size() - matched;
  out_.account.given_with_slack = given.size();
}

void evt_ledger::check_ring() {
  if (end_records_.empty()) {
    out_.findings.add(finding_kind::end_record, 0, "there is no end-of-file record");
    return;
  }
  for (std::size_t i = 1; i < end_records_.size(); ++i) {
    out_.findings.add(finding_kind::end_record, end_records_[i], "one more end-of-file record");
  }
  if (claims_ != header_ && !open_) {
    out_.findings.add(finding_kind::end_record, end_records_.front(),
                      "names records " + text_of(claims_.oldest) + " to below " +
                          text_of(claims_.next_number) + " from offset " + text_of(claims_.begin) +
                          " to " + text_of(claims_.end) + ", the header " +
                          text_of(header_.oldest) + " to below " + text_of(header_.next_number) +
                          " from " + text_of(header_.begin) + " to " + text_of(header_.end));
  }
  if (claims_.end != end_records_.front()) {
    out_.findings.add(finding_kind::end_record, end_records_.front(),
                      "says that it stands at " + text_of(claims_.end));
  }
}

// Sizes are compared whatever the reader did with the record: it accepts some that are impossible.
void evt_ledger::check_record(const area& part, finding_runs& unread) {
  if (part.kind == area_kind::damage) {
    find(finding_kind::damaged_bytes, part, text_of(part.size) + " bytes");
  }
  if (!holds_records(part.kind)) return;
  const auto size = log_.at_or_zero<std::uint32_t>(part.offset);
  if (!log_.has(part.offset, size)) {
    const bool wrapped = wrapped_ && &part == &areas_.back();
    find(wrapped ? finding_kind::record_wrapped : finding_kind::record_cut, part,
         "size " + text_of(size));
  } else if (size < layout::record_head_bytes) {
    find(finding_kind::record_size, part, "size " + text_of(size));
  } else if (is_lost(part.kind)) {
    unread.add(part, std::nullopt, area_text(part.kind));
  } else if (is_living(part.offset)) {
    const auto at_end = log_.at_or_zero<std::uint32_t>(part.offset + size - 4);
    if (at_end == size) return;
    find(finding_kind::sizes_differ, part,
         text_of(size) + " in front, " + text_of(at_end) + " at the end");
  }
}

// The live records in the order of the ring.
void evt_ledger::check_sequence() {
  for (const bool front : {false, true}) {
    for (const area& part : areas_) {
      if (!holds_records(part.kind) || !is_living(part.offset)) continue;
      if ((part.offset < claims_.begin) != front) continue;
      sequence_.add({part.offset, std::nullopt, part.number, part.time_written});
    }
  }
}

void evt_ledger::count_declared() {
  if (claims_.next_number < claims_.oldest) return;
  std::uint64_t found = 0;
  for (const area& part : areas_) {
    found += holds_records(part.kind) && is_living(part.offset) && part.number >= claims_.oldest &&
             part.number < claims_.next_number;
  }
  out_.account.declared = claims_.next_number - claims_.oldest;
  out_.account.missing = out_.account.declared - std::min(out_.account.declared, found);
}

void evt_ledger::read_end_record() {
  claims_ = header_;
  if (end_records_.empty()) return;
  byte_cursor in = log_;
  in.seek(end_records_.front() + 20);
  claims_.begin = in.read_u32();
  claims_.end = in.read_u32();
  claims_.next_number = in.read_u32();
  claims_.oldest = in.read_u32();
}

void evt_ledger::run(std::span<const std::byte> log, std::span<const std::uint64_t> given) {
  log_ = byte_cursor(log);
  read_header();
  walk(log);
  read_end_record();
  settle(given);
  check_ring();
  finding_runs unread(out_.findings, finding_kind::record_unread);
  for (const area& part : areas_) check_record(part, unread);
  unread.flush();
  check_sequence();
  count_declared();
}

}  // namespace zanvik
