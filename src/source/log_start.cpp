#include "source/log_start.h"

#include <algorithm>
#include <cstring>
#include <string_view>

#include "base/byte_cursor.h"
#include "evt/evt_record.h"

namespace zanvik {
namespace {

bool has_text(std::span<const std::byte> bytes, std::size_t at, std::string_view text) {
  const auto there = byte_cursor(bytes).bytes_at(at, text.size());
  return there.size() == text.size() && std::memcmp(there.data(), text.data(), text.size()) == 0;
}

// A boot sector of a file system, or a partition table that has an entry and no impossible one.
bool is_boot_sector(std::span<const std::byte> head) {
  constexpr std::uint64_t signature_at = 510, table_at = 446, entry_bytes = 16;
  const byte_cursor bytes(head);
  if (bytes.at<std::uint16_t>(signature_at) != 0xaa55) return false;
  for (const auto& [at, text] : {std::pair<std::size_t, std::string_view>{3, "NTFS    "},
                                 {3, "EXFAT   "},
                                 {54, "FAT1"},
                                 {82, "FAT32"}}) {
    if (has_text(head, at, text)) return true;
  }
  bool any = false;
  for (std::uint64_t entry = table_at; entry < signature_at; entry += entry_bytes) {
    if ((bytes.at_or_zero<std::uint8_t>(entry) & 0x7f) != 0) return false;
    any = any || bytes.at_or_zero<std::uint8_t>(entry + 4) != 0;
  }
  return any;
}

bool is_other_file_system(std::span<const std::byte> head) {
  constexpr std::uint64_t super_block = 1024;
  const byte_cursor bytes(head);
  const bool ext = bytes.at<std::uint16_t>(super_block + 56) == 0xef53 &&
                   bytes.at_or_zero<std::uint32_t>(super_block + 24) <= 6;
  return ext || (has_text(head, super_block, "H+") &&
                 bytes.at_or_zero<std::uint16_t>(super_block + 2) == 0x0400);
}

}  // namespace

std::optional<log_kind> log_kind_of(std::span<const std::byte> head) {
  const byte_cursor bytes(head);
  const auto first = bytes.at_or_zero<std::uint64_t>(0);
  if (first == evtx_layout::file_signature || first == evtx_layout::chunk_signature ||
      bytes.at<std::uint64_t>(evtx_layout::file_header_bytes) == evtx_layout::chunk_signature) {
    return log_kind::evtx;
  }
  if (bytes.at<std::uint32_t>(evt_layout::signature_at) == evt_layout::signature) {
    return log_kind::evt;
  }
  return std::nullopt;
}

std::optional<image_kind> image_kind_of(std::span<const std::byte> head,
                                        std::span<const std::byte> tail) {
  constexpr std::uint64_t segment_at = 9;
  if (has_text(head, 0, {"EVF\x09\x0d\x0a\xff\0", 8})) {
    if (byte_cursor(head).at<std::uint16_t>(segment_at) != 1) return std::nullopt;
    return image_kind::ewf;
  }
  if (has_text(head, 0, "KDMV") || has_text(head, 0, "# Disk DescriptorFile")) {
    return image_kind::vmdk;
  }
  if (has_text(head, 0, "conectix") || has_text(tail, 0, "conectix")) return image_kind::vhd;
  if (is_boot_sector(head) || is_other_file_system(head)) return image_kind::raw;
  return std::nullopt;
}

}  // namespace zanvik
