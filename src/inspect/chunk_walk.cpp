#include "inspect/chunk_walk.h"

#include "base/time_value.h"
#include "evtx/container/chunk.h"
#include "inspect/checksum.h"

namespace zanvik {
namespace {

namespace layout = evtx_layout;

// Header, a fragment header of the smallest kind rounded up, and the size again.
constexpr std::uint32_t least_record = layout::record_header_bytes + 4;
constexpr std::uint64_t most_records = layout::chunk_bytes / least_record;
constexpr std::uint64_t search_step = 4;  // records stand at multiples of 8; damage may not

constexpr std::uint64_t flags_at = 120;
constexpr std::uint64_t strings_at = layout::string_table_at;

}  // namespace

std::optional<std::uint64_t> chunk_header::declared() const {
  if (!has_records()) return 0;
  if (last_number < first_number || last_number - first_number >= most_records) return {};
  return last_number - first_number + 1;
}

chunk_header read_chunk_header(std::span<const std::byte> chunk) {
  byte_cursor in(chunk);
  in.seek(8);  // the signature
  chunk_header header;
  header.first_in_file = in.read_u64();
  header.last_in_file = in.read_u64();
  header.first_number = in.read_u64();
  header.last_number = in.read_u64();
  header.header_bytes = in.read_u32();
  header.last_record_at = in.read_u32();
  header.free_at = in.read_u32();
  header.data_checksum = in.read_u32();
  in.seek(flags_at);
  header.flags = in.read_u32();
  header.header_checksum = in.read_u32();
  return header;
}

std::uint32_t header_checksum_of(std::span<const std::byte> chunk) {
  const byte_cursor bytes(chunk);
  const std::uint32_t front = crc32_of(bytes.bytes_at(0, flags_at));
  return crc32_of(bytes.bytes_at(strings_at, layout::chunk_header_bytes - strings_at), front);
}

std::uint32_t data_checksum_of(std::span<const std::byte> chunk, std::uint64_t end) {
  constexpr std::uint64_t begin = layout::chunk_header_bytes;
  if (end < begin) return 0;
  return crc32_of(byte_cursor(chunk).bytes_at(begin, end - begin));
}

std::optional<record_head> record_head_at(const byte_cursor& chunk, std::uint64_t at) {
  if (!chunk.has(at, layout::record_header_bytes)) return {};
  if (chunk.at_or_zero<std::uint32_t>(at) != layout::record_signature) return {};
  return record_head{chunk.at_or_zero<std::uint32_t>(at + 4),
                     chunk.at_or_zero<std::uint64_t>(at + 8),
                     chunk.at_or_zero<std::uint64_t>(at + 16)};
}

bool fits(const byte_cursor& chunk, std::uint64_t at, const record_head& head) {
  return head.size >= least_record && chunk.has(at, head.size);
}

std::optional<std::uint32_t> size_at_end(const byte_cursor& chunk, std::uint64_t at,
                                         const record_head& head) {
  if (!fits(chunk, at, head)) return {};
  return chunk.at<std::uint32_t>(at + head.size - 4);
}

// Whether a record may begin there; if none is expected, its time must be plausible.
bool chunk_walk::is_record(std::uint64_t at) const {
  const auto head = record_head_at(chunk_, at);
  return head && fits(chunk_, at, *head) && is_valid_filetime(head->time_written);
}

std::uint64_t chunk_walk::next_record(std::uint64_t from, std::uint64_t end) const {
  for (std::uint64_t at = from; at < end; at += search_step) {
    if (is_record(at)) return at;
  }
  return end;
}

// The end of the consecutive records that start with the chunk's first one.
std::uint64_t chunk_walk::end_of_row() const {
  std::uint64_t at = layout::chunk_header_bytes;
  for (auto head = record_head_at(chunk_, at); head && fits(chunk_, at, *head);
       head = record_head_at(chunk_, at)) {
    at += head->size;
  }
  return at;
}

// There is a record header at `at`. Returns where its area ends.
std::uint64_t chunk_walk::take_record(std::uint64_t at, bool used, const record_head& head) {
  area part{at, head.size, used ? area_kind::record_read : area_kind::free_record, head.number,
            head.time_written};
  if (!fits(chunk_, at, head)) {
    part.kind = head.size < least_record ? area_kind::lost_size : area_kind::lost_cut;
    part.size = next_record(at + search_step, used ? out_.used_end : chunk_.size()) - at;
  }
  out_.areas.push_back(part);
  return at + part.size;
}

// There is no record header at `at`. Returns where the next one is, or `border`.
std::uint64_t chunk_walk::take_gap(std::uint64_t at, std::uint64_t border, bool used) {
  const std::uint64_t end = next_record(at + 1 + (3 - at % search_step), border);
  const auto bytes = chunk_.bytes_at(at, end - at);
  const auto kind = used              ? area_kind::damage
                    : all_zero(bytes) ? area_kind::free_zero
                                      : area_kind::free_data;
  out_.areas.push_back({at, end - at, kind});
  return end;
}

const walked_chunk& chunk_walk::walk(std::span<const std::byte> chunk) {
  chunk_ = byte_cursor(chunk);
  out_.areas.clear();
  out_.header = read_chunk_header(chunk);
  const bool has_signature = chunk_.at<std::uint64_t>(0) == layout::chunk_signature;
  out_.state = has_signature     ? chunk_state::sound
               : all_zero(chunk) ? chunk_state::empty
                                 : chunk_state::foreign;
  if (out_.state == chunk_state::empty) {
    out_.used_end = 0;
    out_.areas.push_back({0, chunk.size(), area_kind::empty_chunk});
    return out_;
  }
  std::uint64_t at = layout::chunk_header_bytes;
  out_.areas.push_back({0, at, area_kind::chunk_header});
  const std::uint64_t free_at = out_.header.free_at;
  if (has_signature && !out_.header.has_records()) {
    out_.used_end = at;
  } else if (has_signature && free_at >= at && free_at <= chunk.size()) {
    out_.used_end = free_at;
  } else {
    out_.used_end = end_of_row();
  }
  while (at < chunk.size()) {
    const bool used = at < out_.used_end;
    const auto head = record_head_at(chunk_, at);
    // In free space an impossible header is like any other bytes.
    if (head && (used || is_record(at))) {
      at = take_record(at, used, *head);
    } else {
      at = take_gap(at, used ? out_.used_end : chunk.size(), used);
    }
  }
  return out_;
}

}  // namespace zanvik
