#include "disk/disk_text.h"

#include <algorithm>
#include <cstdint>
#include <string_view>
#include <vector>

#include "base/byte_cursor.h"
#include "base/digits.h"
#include "base/time_format.h"
#include "base/utf16.h"
#include "disk/disk_layout.h"
#include "disk/disk_types.h"

namespace zanvik {
namespace {

constexpr std::size_t disk_signature_at = 440;
constexpr std::size_t media_at = 21;
constexpr std::uint8_t media_hard_disk = 248;
constexpr std::uint8_t media_removable = 240;

// Writes the numbers of one text. Meant, in hexadecimal: the base is a state that earlier numbers
// leave behind, so a bare number is decimal only until the first other one.
class number_writer {
 public:
  number_writer(std::string& out, bool decimal, bool starts_in_hex)
      : out_(out), decimal_(decimal), hex_(starts_in_hex) {}

  // In the requested base; hexadecimal has "0x".
  void number(std::uint64_t value) {
    hex_ = !decimal_;
    if (hex_) out_ += "0x";
    bare(value);
  }

  // In the base of the previous number, without "0x".
  void bare(std::uint64_t value) {
    if (hex_) {
      append_hex(out_, value);
    } else {
      append_decimal(out_, value);
    }
  }

  // Both halves in hexadecimal, four digits each.
  void signature(std::uint32_t value, char fill) {
    hex_ = !decimal_;
    half(value >> 16, fill);
    out_ += '-';
    half(value & 0xffff, fill);
  }

 private:
  void half(std::uint32_t value, char fill) {
    char digits[16];
    const auto length = static_cast<std::size_t>(write_hex(digits, value) - digits);
    out_.append(4 - std::min<std::size_t>(length, 4), fill).append(digits, length);
  }

  std::string& out_;
  bool decimal_;
  bool hex_;
};

// Meant: the signature of a disk is padded with blanks, that of a volume with zeros.
constexpr char disk_signature_fill = ' ';
constexpr char volume_signature_fill = '0';

bool translate_time(const translate_spec& spec, const byte_cursor& value, std::string& text) {
  const auto filetime = value.at<std::uint64_t>(0);
  if (!filetime) return false;
  std::string time;
  if (!format_with_strings(text, time, qx::time(*filetime, qx::type_time::filetime),
                           spec.year_first ? "yyyy/mm/dd" : "mm/dd/yyyy", "hh:mm:ss.xxxxxxxxx")) {
    return false;
  }
  text.append(1, ' ').append(time);
  return true;
}

// Offsets and sizes count sectors of 512 bytes, whatever the sector size of the disk; meant.
bool translate_mbr(const translate_spec& spec, const byte_cursor& value, std::string& text) {
  std::vector<partition_entry> partitions;
  if (!parse_disk_layout(value.bytes(), partitions, true)) return false;
  number_writer numbers(text, spec.decimal, false);
  text = "mbr {";
  if (const auto signature = value.at_or_zero<std::uint32_t>(disk_signature_at); signature != 0) {
    text += "disk_sig:";
    numbers.signature(signature, disk_signature_fill);
    text += ';';
  }
  for (std::size_t i = 0; i < partitions.size(); ++i) {
    text += i == 0 ? "vol" : "|vol";
    numbers.bare(i + 1);
    text += ";byte offset:";
    numbers.number(partitions[i].lba_start * sector_bytes);
    text += ";size:";
    numbers.number(partitions[i].num_sectors * sector_bytes);
    text += ";type:";
    text += partition_text(partitions[i].type);
  }
  text += '}';
  return true;
}

std::string_view media_text(std::uint8_t media) {
  if (media == media_hard_disk) return "media:hard_disk;";
  return media == media_removable ? "media:removable;" : "";
}

bool translate_vbr(const translate_spec& spec, const byte_cursor& value, std::string& text) {
  if (value.size() < sector_bytes) return false;
  partition_entry entry;
  if (!parse_boot_sector(entry, value.bytes())) {
    text = "invalid data";
    return true;
  }
  // Meant: "sysid" shows the type, and the sector size has no "0x" in hexadecimal.
  number_writer numbers(text, spec.decimal, !spec.decimal);
  text = "vbr {sysid:" + partition_text(entry.type) + ";sector_size(bytes):";
  numbers.bare(entry.bytes_per_sector);
  text += ";cluster_size(bytes):";
  numbers.number(std::uint64_t{entry.bytes_per_sector} * entry.sectors_per_cluster);
  text += ';';
  text += media_text(value.at_or_zero<std::uint8_t>(media_at));
  text += "partition_size(bytes):";
  numbers.number(entry.num_sectors * entry.bytes_per_sector);
  text += ";vol_sig:";
  numbers.signature(entry.vol_sig, volume_signature_fill);
  text += '}';
  return true;
}

// The drive layout as Windows returns it: DRIVE_LAYOUT_INFORMATION_EX, with a
// PARTITION_INFORMATION_EX for each partition.
namespace drive_layout {
constexpr std::size_t count_at = 4;
constexpr std::size_t disk_id_at = 8;
constexpr std::size_t entries_at = 48;
constexpr std::size_t entry_bytes = 144;
constexpr std::uint32_t entries_max = 4;
// In an entry.
constexpr std::size_t offset_at = 8;
constexpr std::size_t length_at = 16;
constexpr std::size_t number_at = 24;
constexpr std::size_t mbr_type_at = 32;
constexpr std::size_t mbr_signature_at = 40;
constexpr std::size_t gpt_id_at = 48;
constexpr std::size_t gpt_name_at = 72;
constexpr std::size_t gpt_name_bytes = 144;  // meant: twice the size of the field
}  // namespace drive_layout

void append_guid_at(std::string& out, const byte_cursor& block, std::size_t offset) {
  const auto bytes = block.bytes_at(offset, 16);
  if (bytes.size() == 16) append_guid(out, bytes.first<16>());
}

void append_extent(std::string& out, number_writer& numbers, const byte_cursor& block,
                   std::size_t entry) {
  out += "vol";
  numbers.bare(block.at_or_zero<std::uint64_t>(entry + drive_layout::number_at));
  out += ";byte_offset:";
  numbers.number(block.at_or_zero<std::uint64_t>(entry + drive_layout::offset_at));
  out += ";num_bytes:";
  numbers.number(block.at_or_zero<std::uint64_t>(entry + drive_layout::length_at));
}

void append_mbr_entry(std::string& out, number_writer& numbers, const byte_cursor& block,
                      std::size_t entry) {
  append_extent(out, numbers, block, entry);
  const auto signature = block.at_or_zero<std::uint32_t>(entry + drive_layout::mbr_signature_at);
  if (signature != 0) {
    out += ";disk_sig:";
    numbers.signature(signature, disk_signature_fill);
  }
  out += ";vol_type:";
  out += partition_text(block.at_or_zero<std::uint8_t>(entry + drive_layout::mbr_type_at));
}

void append_gpt_entry(std::string& out, number_writer& numbers, const byte_cursor& block,
                      std::size_t entry) {
  append_extent(out, numbers, block, entry);
  out += ";vol_guid:";
  append_guid_at(out, block, entry + drive_layout::gpt_id_at);
  out += ";vol_type:";
  const auto rest = block.bytes().subspan(entry + drive_layout::gpt_name_at);
  append_utf8_from_utf16(out, rest.first(std::min(rest.size(), drive_layout::gpt_name_bytes)));
}

// Meant: the style in the block is ignored. The disk's signature is repeated in the first entry of
// a disk with a boot record.
bool has_mbr_form(const byte_cursor& block) {
  using namespace drive_layout;
  return block.at_or_zero<std::uint32_t>(disk_id_at) ==
         block.at_or_zero<std::uint32_t>(entries_at + mbr_signature_at);
}

bool translate_layout(const translate_spec& spec, const byte_cursor& value, std::string& text) {
  using namespace drive_layout;
  const std::uint64_t count = value.at_or_zero<std::uint32_t>(count_at);
  if (!value.has(0, entries_at) || !value.has(entries_at, count * entry_bytes)) return false;
  text = "part_tbl {";
  const bool any = format_disk_layout(text, value.bytes(), spec.decimal);
  text += any ? "}" : "unk}";
  return any;
}

}  // namespace

bool format_disk_layout(std::string& out, std::span<const std::byte> block, bool decimal) {
  using namespace drive_layout;
  const byte_cursor in(block);
  const bool mbr_form = has_mbr_form(in);
  const auto count = std::min(in.at_or_zero<std::uint32_t>(count_at), entries_max);
  number_writer numbers(out, decimal, false);
  bool any = false;
  for (std::size_t i = 0; i < count; ++i) {
    const std::size_t entry = entries_at + i * entry_bytes;
    if (!in.has(entry, entry_bytes)) break;
    if (in.at_or_zero<std::uint64_t>(entry + length_at) == 0) continue;
    if (!any && !mbr_form) {
      out += "disk_guid:";
      append_guid_at(out, in, disk_id_at);
    }
    if (any || !mbr_form) out += ';';
    any = true;
    (mbr_form ? append_mbr_entry : append_gpt_entry)(out, numbers, in, entry);
  }
  return any;
}

bool translate_value(const translate_spec& spec, std::span<const std::byte> value,
                     std::string& text) {
  text.clear();
  const byte_cursor data(value.subspan(std::min<std::size_t>(spec.offset, value.size())));
  switch (spec.kind) {
    case translate_kind::tf:
      return translate_time(spec, data, text);
    case translate_kind::mbr:
      return translate_mbr(spec, data, text);
    case translate_kind::vbr:
      return translate_vbr(spec, data, text);
    case translate_kind::vtbl:
      return translate_layout(spec, data, text);
  }
  return false;
}

}  // namespace zanvik
