#include "inspect/chunk_findings.h"

#include <string>

#include "base/time_value.h"
#include "evtx/container/chunk.h"
#include "inspect/finding_runs.h"

namespace zanvik {
namespace {

namespace layout = evtx_layout;

constexpr std::uint32_t declared_header_bytes = 128;
constexpr std::uint32_t no_checksum_flag = 4;

std::string text_of(std::uint64_t value) { return std::to_string(value); }

class chunk_check {
 public:
  chunk_check(std::span<const std::byte> bytes, const walked_chunk& chunk, chunk_summary& summary,
              finding_list& findings)
      : bytes_(bytes),
        cursor_(bytes),
        chunk_(chunk),
        summary_(summary),
        findings_(findings),
        unread_(findings, finding_kind::record_unread),
        partial_(findings, finding_kind::record_partial),
        outside_(findings, finding_kind::number_outside) {}

  void run() {
    if (chunk_.state == chunk_state::foreign) {
      find(finding_kind::chunk_signature, 0, "no chunk begins here");
      return;
    }
    check_records();
    check_header();
    check_checksums();
  }

 private:
  finding& find(finding_kind kind, std::uint64_t at, std::string detail) {
    finding& made = findings_.add(kind, summary_.offset + at, std::move(detail));
    made.chunk = summary_.index;
    return made;
  }
  void find_record(finding_kind kind, const area& part, std::string detail) {
    find(kind, part.offset, std::move(detail)).record = part.number;
  }

  // The same area with its offset in the file.
  area shifted(area part) const {
    part.offset += summary_.offset;
    return part;
  }

  void check_records();
  void check_record(const area& part);
  void find_hidden(const area& part);
  void check_header();
  void check_checksums();

  std::span<const std::byte> bytes_;
  byte_cursor cursor_;
  const walked_chunk& chunk_;
  chunk_summary& summary_;
  finding_list& findings_;
  finding_runs unread_;
  finding_runs partial_;
  finding_runs outside_;
  std::uint64_t last_record_at_ = 0;
};

void chunk_check::check_records() {
  for (const area& part : chunk_.areas) {
    if (part.kind == area_kind::damage) {
      find(finding_kind::damaged_bytes, part.offset, text_of(part.size) + " bytes");
    } else if (holds_records(part.kind) && !is_free_record(part.kind)) {
      check_record(part);
    }
  }
  unread_.flush();
  partial_.flush();
  outside_.flush();
}

void chunk_check::check_record(const area& part) {
  const auto head = record_head_at(cursor_, part.offset);
  if (!head) return;
  if (summary_.records++ == 0) summary_.found_first = part.number;
  summary_.found_last = part.number;
  last_record_at_ = part.offset;
  if (!fits(cursor_, part.offset, *head)) {
    const bool cut = part.offset + head->size > bytes_.size();
    find_record(cut ? finding_kind::record_cut : finding_kind::record_size, part,
                "size " + text_of(head->size));
    return;
  }
  const auto at_end = size_at_end(cursor_, part.offset, *head);
  if (at_end != head->size) {
    find_record(finding_kind::sizes_differ, part,
                text_of(head->size) + " in front, " + text_of(*at_end) + " at the end");
  }
  if (!is_lost(part.kind) && !chunk_.header.declares(part.number)) {
    outside_.add(shifted(part), summary_.index,
                 "outside the declared " + text_of(chunk_.header.first_number) + " to " +
                     text_of(chunk_.header.last_number));
  }
  if (is_lost(part.kind)) unread_.add(shifted(part), summary_.index, area_text(part.kind));
  if (part.kind == area_kind::record_bare || part.kind == area_kind::record_part) {
    partial_.add(shifted(part), summary_.index, area_text(part.kind));
  }
  find_hidden(part);
}

// A record within another one: a sound header whose record ends inside, with its own size at its
// end or together with the outer one, as an increased outer size leaves it.
void chunk_check::find_hidden(const area& part) {
  const std::uint64_t end = part.offset + part.size;
  for (std::uint64_t at = part.offset + layout::record_header_bytes;
       at + layout::record_header_bytes < end;) {
    const auto head = record_head_at(cursor_, at);
    at += 8;
    if (!head || !is_valid_filetime(head->time_written)) continue;
    const std::uint64_t begin = at - 8;
    if (!fits(cursor_, begin, *head) || head->size > end - begin) continue;
    const bool ends_together = begin + head->size == end;
    if (!ends_together && size_at_end(cursor_, begin, *head) != head->size) continue;
    find(finding_kind::record_hidden, begin,
         text_of(head->size) + " bytes inside record " + text_of(part.number) + ", written " +
             utc_text(head->time_written))
        .record = head->number;
    at = begin + head->size;
  }
}

void chunk_check::check_header() {
  const chunk_header& header = chunk_.header;
  if (header.header_bytes != declared_header_bytes) {
    find(finding_kind::chunk_fields, 40, "header size " + text_of(header.header_bytes));
  }
  const auto declared = header.declared();
  if (!declared) {
    find(finding_kind::chunk_fields, layout::first_logical_record_at,
         "declares records " + text_of(header.first_number) + " to " + text_of(header.last_number));
  } else if (*declared != summary_.records) {
    find(finding_kind::declared_count, layout::first_logical_record_at,
         "declares " + text_of(*declared) + ", holds " + text_of(summary_.records));
  }
  if (declared && header.has_records() &&
      header.last_in_file - header.first_in_file != header.last_number - header.first_number) {
    find(finding_kind::chunk_fields, 8,
         "counts records " + text_of(header.first_in_file) + " to " +
             text_of(header.last_in_file) + " of the log, with the numbers " +
             text_of(header.first_number) + " to " + text_of(header.last_number));
  }
  if (header.has_records() && summary_.records != 0 && header.last_record_at != last_record_at_) {
    find(finding_kind::chunk_fields, 44,
         "last record at " + text_of(header.last_record_at) + ", found at " +
             text_of(last_record_at_));
  }
  if (header.has_records() && header.free_at != chunk_.used_end) {
    find(finding_kind::chunk_fields, 48, "free space at " + text_of(header.free_at));
  }
}

void chunk_check::check_checksums() {
  const chunk_header& header = chunk_.header;
  summary_.data_checksum = data_checksum_of(bytes_, chunk_.used_end);
  if ((header.flags & no_checksum_flag) != 0 && header.header_checksum == 0 &&
      header.data_checksum == 0) {
    return;
  }
  summary_.header_checksum_good = header_checksum_of(bytes_) == header.header_checksum;
  summary_.data_checksum_good = summary_.data_checksum == header.data_checksum;
  if (!summary_.header_checksum_good) {
    find(finding_kind::chunk_header_checksum, 124, "of the chunk's header");
  }
  if (!summary_.data_checksum_good) {
    find(finding_kind::chunk_data_checksum, 52, "of the chunk's records");
  }
}

}  // namespace

void find_in_chunk(std::span<const std::byte> bytes, const walked_chunk& chunk,
                   chunk_summary& summary, finding_list& findings) {
  summary.state = chunk.state;
  if (chunk.state == chunk_state::empty) return;
  summary.declared_first = chunk.header.first_number;
  summary.declared_last = chunk.header.last_number;
  summary.used_bytes = static_cast<std::uint32_t>(chunk.used_end);
  chunk_check(bytes, chunk, summary, findings).run();
}

}  // namespace zanvik
