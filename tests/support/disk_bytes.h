// Boot records, boot sectors and drive layouts under construction, for tests of their readers.
#pragma once

#include <string_view>

#include "byte_builder.h"

namespace zanvik::testing {

inline void put_text(byte_vector& bytes, std::size_t at, std::string_view text) {
  for (const char c : text) set_u8(bytes, at++, static_cast<std::uint8_t>(c));
}

struct table_row {
  std::size_t sector;  // of the table
  std::size_t entry;   // 0 to 3
  std::uint8_t type;
  std::uint32_t start;
  std::uint32_t count;
};

// A disk of that size, signed at the end of its first sector.
inline byte_vector disk_bytes(std::size_t size, const std::vector<table_row>& rows,
                              std::size_t sector_size = 512) {
  byte_vector bytes(size);
  if (size >= sector_size) set_u16(bytes, sector_size - 2, 0xaa55);
  for (const table_row& row : rows) {
    const std::size_t at = row.sector * sector_size + 446 + 16 * row.entry;
    set_u8(bytes, at + 4, row.type);
    set_u32(bytes, at + 8, row.start);
    set_u32(bytes, at + 12, row.count);
  }
  return bytes;
}

// 1,000 sectors of 512 bytes in clusters of 8, signature 0012-abcd.
inline byte_vector ntfs_sector() {
  byte_vector bytes(512);
  put_text(bytes, 3, "NTFS    ");
  set_u16(bytes, 11, 512);
  set_u8(bytes, 13, 8);
  set_u8(bytes, 21, 248);
  set_u64(bytes, 40, 1000);
  set_u64(bytes, 72, 0x555555550012abcd);
  return bytes;
}

}  // namespace zanvik::testing
