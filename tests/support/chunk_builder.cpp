#include "chunk_builder.h"

#include <algorithm>
#include <stdexcept>
#include <utility>

namespace zanvik::testing {

namespace {

constexpr std::size_t chunk_header_bytes = 512;

void append_record(byte_vector& chunk, chunk_tables& tables, const record_builder& record) {
  const std::size_t start = chunk.size();
  append_u32(chunk, 0x00002a2a);
  append_u32(chunk, 0);
  append_u64(chunk, record.number);
  append_u64(chunk, record.filetime);
  bxml_builder content(chunk, tables);
  if (record.content) record.content(content);
  append_zeros(chunk, (8 - (chunk.size() + 4 - start) % 8) % 8);
  const auto size = static_cast<std::uint32_t>(chunk.size() + 4 - start);
  append_u32(chunk, record.declared_size.value_or(size));
  set_u32(chunk, start + 4, record.declared_size.value_or(size));
}

}  // namespace

record_builder template_record(std::uint64_t number, std::uint64_t filetime,
                               template_definition definition, std::vector<slot_value> slots) {
  return {.number = number,
          .filetime = filetime,
          .content = [definition = std::move(definition), slots = std::move(slots)](
                         bxml_builder& xml) { xml.template_instance(definition, slots); }};
}

record_builder plain_record(std::uint64_t number, std::uint64_t filetime, bxml_writer content) {
  return {.number = number, .filetime = filetime, .content = std::move(content)};
}

record_builder raw_record(std::uint64_t number, std::uint64_t filetime, byte_vector content) {
  return {.number = number,
          .filetime = filetime,
          .content = [content = std::move(content)](bxml_builder& xml) { xml.raw(content); }};
}

chunk_builder& chunk_builder::add(record_builder record) {
  records_.push_back(std::move(record));
  return *this;
}

chunk_builder& chunk_builder::slack(record_builder record) {
  slack_.push_back(std::move(record));
  return *this;
}

chunk_builder& chunk_builder::free_tail(byte_vector bytes) {
  append_bytes(tail_, bytes);
  return *this;
}

chunk_builder& chunk_builder::declare(std::uint64_t first, std::uint64_t last) {
  declared_ = {first, last};
  return *this;
}

chunk_builder::built chunk_builder::build() const {
  built out;
  chunk_tables tables;
  append_zeros(out.bytes, chunk_header_bytes);
  for (const record_builder& record : records_) {
    out.record_offsets.push_back(out.bytes.size());
    append_record(out.bytes, tables, record);
  }
  const std::size_t last_record =
      out.record_offsets.empty() ? chunk_header_bytes : out.record_offsets.back();
  const std::size_t free_space = out.bytes.size();
  const chunk_tables declared_tables = tables;  // names of slack records are in no table
  for (const record_builder& record : slack_) {
    out.record_offsets.push_back(out.bytes.size());
    append_record(out.bytes, tables, record);
  }
  append_bytes(out.bytes, tail_);
  if (out.bytes.size() > chunk_bytes) throw std::logic_error("more records than a chunk can hold");
  out.bytes.resize(chunk_bytes);
  write_header(out.bytes, declared_tables, last_record, free_space);
  if (!records_.empty()) out.next_number = records_.back().number + 1;
  return out;
}

void chunk_builder::write_header(byte_vector& chunk, const chunk_tables& tables,
                                 std::size_t last_record, std::size_t free_space) const {
  constexpr std::uint64_t none = ~std::uint64_t{0};
  const std::uint64_t first = records_.empty() ? none : records_.front().number;
  const std::uint64_t last = records_.empty() ? none : records_.back().number;
  const auto logical = declared_.value_or(std::pair{first, last});
  byte_vector head = bytes_of("ElfChnk");
  append_u8(head, 0);
  append_u64(head, records_.empty() ? 1 : first);
  append_u64(head, last);
  append_u64(head, logical.first);
  append_u64(head, logical.second);
  append_u32(head, 128);
  append_u32(head, static_cast<std::uint32_t>(last_record));
  append_u32(head, static_cast<std::uint32_t>(free_space));
  const auto whole = std::span<const std::byte>(chunk);
  append_u32(head, crc32(whole.subspan(chunk_header_bytes, free_space - chunk_header_bytes)));
  append_zeros(head, 64);
  append_u32(head, 1);  // what live logs carry here
  append_u32(head, 0);  // the header's CRC, below
  for (const std::uint32_t offset : tables.string_table) append_u32(head, offset);
  for (const std::uint32_t offset : tables.template_table) append_u32(head, offset);
  const auto header = std::span<const std::byte>(head);
  set_u32(head, 124, crc32(header.subspan(128), crc32(header.first(120))));
  std::copy(head.begin(), head.end(), chunk.begin());
}

}  // namespace zanvik::testing
