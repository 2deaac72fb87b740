#include "log_builder.h"

#include <algorithm>

namespace zanvik::testing {

log_builder::log_builder() {
  append_zeros(bytes_, file_header_bytes);
  write_header();
}

log_builder& log_builder::chunk(const chunk_builder& chunk) {
  const chunk_builder::built built = chunk.build();
  const std::size_t offset = bytes_.size();
  chunk_offsets_.push_back(offset);
  append_bytes(bytes_, built.bytes);
  std::vector<std::size_t>& records = record_offsets_.emplace_back();
  for (const std::size_t record : built.record_offsets) records.push_back(offset + record);
  next_number_ = std::max(next_number_, built.next_number);
  write_header();
  return *this;
}

std::size_t log_builder::chunk_offset(std::size_t chunk) const { return chunk_offsets_.at(chunk); }

std::size_t log_builder::record_offset(std::size_t chunk, std::size_t record) const {
  return record_offsets_.at(chunk).at(record);
}

void log_builder::write_header() {
  const std::size_t chunks = chunk_offsets_.size();
  byte_vector head = bytes_of("ElfFile");
  append_u8(head, 0);
  append_u64(head, 0);
  append_u64(head, chunks == 0 ? 0 : chunks - 1);
  append_u64(head, next_number_);
  append_u32(head, 128);
  append_u16(head, 1);
  append_u16(head, 3);
  append_u16(head, static_cast<std::uint16_t>(file_header_bytes));
  append_u16(head, static_cast<std::uint16_t>(chunks));
  append_zeros(head, 120 - head.size());
  append_u32(head, 0);  // neither dirty nor full
  append_u32(head, crc32(std::span<const std::byte>(head).first(120)));
  poke_bytes(0, head);
}

}  // namespace zanvik::testing
