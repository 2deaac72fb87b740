#include <algorithm>

#include "base/limits.h"
#include "inspect/finding.h"

namespace zanvik {
namespace {

struct kind_row {
  finding_kind kind;
  std::string_view name;
  finding_weight weight;
  std::string_view meaning;
};

using enum finding_kind;

// In the order of the enumeration; docs/integrity.md has the same rows with harmless causes.
constexpr kind_row rows[] = {
    {header_checksum, "header_checksum", finding_weight::finding,
     "the file header was changed after it was written, or a write was interrupted"},
    {header_fields, "header_fields", finding_weight::finding,
     "the header has values that Windows does not write: damage, or another program"},
    {header_residue, "header_residue", finding_weight::finding,
     "bytes in the part of the header block that is always zero"},
    {not_closed, "not_closed", finding_weight::note,
     "the log was copied while it was open, or its machine lost power; header fields are stale"},
    {log_full, "log_full", finding_weight::note, "the log reached its maximum size"},
    {no_checksums, "no_checksums", finding_weight::note,
     "the log says of itself that it has no checksums"},
    {chunk_count, "chunk_count", finding_weight::finding,
     "chunks were removed or added, or lost their signature"},
    {oldest_newest, "oldest_newest", finding_weight::finding,
     "the header does not name the chunks that hold the oldest and the newest records"},
    {next_number, "next_number", finding_weight::finding,
     "records at the log's end were removed or added without updating the header"},
    {file_tail, "file_tail", finding_weight::finding,
     "the file was cut short, or something was appended to it"},
    {chunk_signature, "chunk_signature", finding_weight::finding,
     "a chunk was overwritten or damaged, or foreign bytes follow the log"},
    {chunk_zeroed, "chunk_zeroed", finding_weight::finding,
     "a chunk between used ones was wiped, or its bytes were lost in a copy"},
    {chunk_header_checksum, "chunk_header_checksum", finding_weight::finding,
     "a chunk's header was changed after it was written"},
    {chunk_data_checksum, "chunk_data_checksum", finding_weight::finding,
     "records of the chunk were changed after they were written"},
    {checksum_stale, "checksum_stale", finding_weight::note,
     "the chunk was being written when its log was copied or its machine lost power"},
    {chunk_fields, "chunk_fields", finding_weight::finding,
     "offsets or numbers in a chunk's header point nowhere or past its records, or do not fit "
     "one another"},
    {declared_count, "declared_count", finding_weight::finding,
     "records of the chunk were removed, joined, damaged or added"},
    {chunk_twice, "chunk_twice", finding_weight::finding,
     "a chunk was copied over another, or the log was put together from parts"},
    {chunk_order, "chunk_order", finding_weight::finding,
     "chunks were moved, or are from different logs"},
    {number_gap, "number_gap", finding_weight::finding, "records, or a whole chunk, were removed"},
    {number_repeated, "number_repeated", finding_weight::finding,
     "records were inserted or renumbered, or are from another log"},
    {number_outside, "number_outside", finding_weight::finding,
     "the chunk's records are not those that its header declares"},
    {begins_late, "begins_late", finding_weight::note,
     "older records are not here: overwritten in a full log, cleared, or left out of an export"},
    {sizes_differ, "sizes_differ", finding_weight::finding,
     "the size of a record was changed at one end only, or part of it was overwritten"},
    {record_cut, "record_cut", finding_weight::finding,
     "a record's size reaches past its chunk or file: damage, or a size changed to hide others"},
    {record_wrapped, "record_wrapped", finding_weight::note,
     "the record continues at the start of the log, because the log is a ring; readers lose it"},
    {record_size, "record_size", finding_weight::finding,
     "a record's size is below the minimum: damage, or changed to stop readers"},
    {record_hidden, "record_hidden", finding_weight::finding,
     "a whole record is inside another one, whose size may have been increased to hide it"},
    {record_unread, "record_unread", finding_weight::finding,
     "readers that follow the declared records do not reach this one"},
    {record_partial, "record_partial", finding_weight::finding,
     "a record or its template was overwritten: values are missing or have no names"},
    {damaged_bytes, "damaged_bytes", finding_weight::finding,
     "bytes between records that are not a record: overwritten, or lost in a copy"},
    {free_records, "free_records", finding_weight::note,
     "older records remain after the used part; they may be all that is left of a cleared log"},
    {time_backwards, "time_backwards", finding_weight::finding,
     "the clock was set back, or records were moved or given other times"},
    {time_backwards_explained, "time_backwards_explained", finding_weight::note,
     "the clock was set back, and events of the log say so"},
    {time_impossible, "time_impossible", finding_weight::finding,
     "the time of a record is before 1990 or after the file's own: a wrong clock, or a forged "
     "time"},
    {time_missing, "time_missing", finding_weight::note,
     "the record's header has no time; Windows writes none into the last record of an export"},
    {end_record, "end_record", finding_weight::finding,
     "header and end-of-file record disagree about the end, or there is no end-of-file record"},
    {log_cleared, "log_cleared", finding_weight::finding,
     "an event says that somebody cleared a log"},
    {service_stopped, "service_stopped", finding_weight::note,
     "an event says that the event log service stopped"},
    {service_started, "service_started", finding_weight::note,
     "an event says that the event log service started"},
    {shutdown_unexpected, "shutdown_unexpected", finding_weight::note,
     "an event says that the machine went down without a shutdown"},
    {computer_changed, "computer_changed", finding_weight::note,
     "the computer was renamed, or the records come from several machines"},
    {unreadable, "unreadable", finding_weight::finding,
     "part of the file could not be read; its records are not in the account"},
};
static_assert(std::size(rows) == finding_kinds);

const kind_row& row_of(finding_kind kind) { return rows[static_cast<std::size_t>(kind)]; }

}  // namespace

std::string_view finding_name(finding_kind kind) { return row_of(kind).name; }
std::string_view finding_meaning(finding_kind kind) { return row_of(kind).meaning; }
finding_weight usual_weight(finding_kind kind) { return row_of(kind).weight; }

finding_weight finding_list::weight_of(finding_kind kind) const {
  return excused_[static_cast<std::size_t>(kind)] ? finding_weight::note : usual_weight(kind);
}

finding& finding_list::add(finding_kind kind, std::uint64_t offset, std::string detail) {
  const bool keep = counts_[static_cast<std::size_t>(kind)]++ < limits::findings_of_a_kind;
  finding& made = keep ? kept_.emplace_back() : not_kept_;
  made = {kind, weight_of(kind), offset, std::nullopt, std::nullopt, std::move(detail)};
  return made;
}

bool finding_list::any_finding() const {
  for (std::size_t kind = 0; kind < finding_kinds; ++kind) {
    if (counts_[kind] == 0) continue;
    if (weight_of(static_cast<finding_kind>(kind)) == finding_weight::finding) return true;
  }
  return false;
}

void finding_list::excuse(finding_kind kind) {
  excused_[static_cast<std::size_t>(kind)] = true;
  for (finding& made : kept_) {
    if (made.kind == kind) made.weight = finding_weight::note;
  }
}

void finding_list::recast(finding_kind from, std::uint64_t chunk, finding_kind to) {
  for (finding& made : kept_) {
    if (made.kind != from || made.chunk != chunk) continue;
    --counts_[static_cast<std::size_t>(from)];
    ++counts_[static_cast<std::size_t>(to)];
    made.kind = to;
    made.weight = weight_of(to);
  }
}

void finding_list::sort_by_offset() {
  std::stable_sort(kept_.begin(), kept_.end(),
                   [](const finding& a, const finding& b) { return a.offset < b.offset; });
}

}  // namespace zanvik
